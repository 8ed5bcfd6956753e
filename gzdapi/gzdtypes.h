/* Scalar types of the public records. Plain C, self-contained. */
#ifndef GZDAPI_GZDTYPES_H
#define GZDAPI_GZDTYPES_H

#include <stdint.h>

typedef unsigned char byte;
typedef int16_t INT16;
typedef uint16_t UINT16;
typedef int32_t INT32;
typedef uint32_t UINT32;
typedef int64_t INT64;
typedef uint64_t UINT64;

#endif
