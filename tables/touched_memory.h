// Much memory that is written soon, and taken from the system at once.
#ifndef GZDTABLES_TOUCHED_MEMORY_H
#define GZDTABLES_TOUCHED_MEMORY_H

#include <cstddef>
#include <memory>

namespace gzdtables {

// The bytes have any value. Throws std::bad_alloc.
[[nodiscard]] std::shared_ptr<std::byte[]> new_touched_memory(std::size_t bytes);

}  // namespace gzdtables

#endif
