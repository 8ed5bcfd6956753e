// Facts and findings as dicts, with the keys of gzdtool's JSON.
#ifndef GZDPYTHON_FACTS_DICT_H
#define GZDPYTHON_FACTS_DICT_H

#include <nanobind/nanobind.h>

#include <vector>

#include "tables/facts.h"

namespace gzdpython {

[[nodiscard]] nanobind::dict dict_of(const gzdtables::Facts& facts);
[[nodiscard]] nanobind::list list_of(const std::vector<gzdtables::Finding>& findings);

}  // namespace gzdpython

#endif
