/*
 * Scalar types of the public records. Plain C, self-contained.
 */
#ifndef GZDAPI_GZDTYPES_H
#define GZDAPI_GZDTYPES_H

#include <stdint.h>

typedef unsigned char byte; /* 8 bits, unsigned */
typedef int16_t INT16;      /* 16 bits, signed */
typedef uint16_t UINT16;    /* 16 bits, unsigned */
typedef int32_t INT32;      /* 32 bits, signed */
typedef uint32_t UINT32;    /* 32 bits, unsigned */
typedef int64_t INT64;      /* 64 bits, signed */
typedef uint64_t UINT64;    /* 64 bits, unsigned */

#endif
