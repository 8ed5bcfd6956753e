// Puts the index into time order.
#ifndef GZDAPI_TIME_ORDER_H
#define GZDAPI_TIME_ORDER_H

#include <vector>

#include "index/GZDItem.h"
#include "index/index.h"

namespace gzd {

// True when e1 is to come before e2. For a few pairs of one stamp the answer is true both ways.
bool sortByTime(const GZDItem& e1, const GZDItem& e2);

// Sorts the whole list, or overlapping windows of a long one. Sorting again what was sorted and has
// not changed since may still reorder items of one stamp; windows in which it would not are known
// and left out.
void sortItems(Index& index);

}  // namespace gzd

#endif
