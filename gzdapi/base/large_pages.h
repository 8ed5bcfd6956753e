// Large pages for memory that is about to be written.
#ifndef GZDAPI_LARGE_PAGES_H
#define GZDAPI_LARGE_PAGES_H

#include <cstddef>

namespace gzd {

// Large pages make touching memory for the first time several times cheaper, where the system has
// them at hand. One that has to fetch them (a virtual machine that gives unused memory back, memory
// in pieces) takes several times longer: the first one tells, and is touched for that. Advice only.
void ask_for_large_pages(void* memory, std::size_t bytes);

}  // namespace gzd

#endif
