// Merges the samples and the events boundary of one block into one.
#ifndef GZDAPI_BOUNDARIES_H
#define GZDAPI_BOUNDARIES_H

#include <memory>

#include "index/index.h"

namespace gzd {

// Describes the boundary that a start or end record (types 15 to 18) stands for.
std::unique_ptr<Recording> make_boundary(const FEVENT& event, const StreamState& state,
                                         const Index& index);

class BoundaryPairing {
 public:
  // Enters a boundary into the index, or merges it into its partner when their stamps differ by
  // less than `tolerance`.
  void add(Index& index, std::unique_ptr<Recording> boundary, UINT64 tolerance);

 private:
  // The last samples and the last events boundary that await a partner.
  struct Pending {
    Recording* samples = nullptr;
    Recording* events = nullptr;
  };

  Pending starts_;
  Pending ends_;
};

}  // namespace gzd

#endif
