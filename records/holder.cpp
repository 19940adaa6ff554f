#include "records/holder.h"

#include <cstdlib>

namespace tervik::detail {

grid_holder* holder_adopt(double* malloced) {
  if (!malloced) return nullptr;
  return new grid_holder{malloced, 1};
}

grid_holder* holder_share(grid_holder* h) {
  if (h) ++h->owners;
  return h;
}

void holder_release(grid_holder* h) {
  if (!h) return;
  if (--h->owners > 0) return;
  std::free(h->data);
  delete h;
}

}  // namespace tervik::detail
