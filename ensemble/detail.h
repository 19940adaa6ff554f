#ifndef TERVIK_ENSEMBLE_DETAIL_H
#define TERVIK_ENSEMBLE_DETAIL_H

// Pieces shared by the ensemble statistics: the element table, checks of the member
// sequences, selection of the members that take part, title edits and malloc'ed buffers.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include <tervik/records.h>

namespace tervik::detail {

// Grid records own malloc()ed arrays and work arrays follow the same rule, so that a result
// can be handed to set_gridPtr. Frees what it still holds when it goes.
template <class T>
class malloc_array {
 public:
  malloc_array() = default;
  malloc_array(const malloc_array&) = delete;
  malloc_array& operator=(const malloc_array&) = delete;
  ~malloc_array() { std::free(data_); }

  // Takes `count` elements (at least one); false, holding nothing, when memory runs out or
  // the size does not fit in size_t.
  bool allocate(std::size_t count) {
    std::free(data_);
    data_ = nullptr;
    if (count == 0) count = 1;
    if (count > SIZE_MAX / sizeof(T)) return false;
    data_ = static_cast<T*>(std::malloc(count * sizeof(T)));
    return data_ != nullptr;
  }
  T* get() const { return data_; }
  T& operator[](std::size_t i) const { return data_[i]; }
  // Gives the array away (to a grid record); the buffer is empty afterwards.
  T* release() {
    T* d = data_;
    data_ = nullptr;
    return d;
  }

 private:
  T* data_ = nullptr;
};

// Statistics accumulate over blocks of this many grid points, so that work storage stays a
// few kilobytes whatever the grid.
constexpr int accumulation_block = 256;

// Points per block when every member's values of each point are gathered for sorting: about
// 4096 doubles in all, at least one point.
int gather_block(int member_count);

// ---- Sequence and member checks (each prints its own message, naming `fn`) ----

// The two sequences have the same length.
bool check_sequences(const char* fn, const std::vector<tervik_data4>& members,
                     const std::vector<int>& codes);

// The header member describes a grid of at least one point.
bool check_header_grid(const char* fn, const std::vector<tervik_data4>& members,
                       std::size_t header);

// Member `i` has values on a grid of nx by ny points.
bool check_member(const char* fn, const std::vector<tervik_data4>& members, std::size_t i,
                  int nx, int ny);

// nx * ny, for sizes that check_header_grid accepted.
inline std::size_t grid_points(const tervik_data4& g) {
  return static_cast<std::size_t>(g.nx) * static_cast<std::size_t>(g.ny);
}

// ---- Members of a scalar statistic ----

// One value array taking part, or a temperature / dew-point pair whose relative humidity
// takes part (dew_point non-null).
struct member_source {
  const double* values;
  const double* dew_point;
};

struct scalar_selection {
  std::size_t header = 0;    // index of the header member
  bool derive_rh = false;    // relative humidity from T/Td pairs
  std::size_t points = 0;    // nx * ny of the header member
  int count = 0;             // n, the members taking part
  malloc_array<member_source> sources;  // `count` of them, in sequence order
};

// Checks the sequences and the element, finds the header member (entering relative-humidity
// derivation when element 14 is asked for and missing), and lists the members that take
// part, each checked against the header's grid. On failure prints the message (the
// not-found text names `not_found_fn`) and returns false.
bool select_scalar_members(const char* fn, const char* not_found_fn,
                           const std::vector<tervik_data4>& members,
                           const std::vector<int>& codes, int element, int level,
                           scalar_selection& sel);

// Values of `src` at points [first, first + len): the member's own array, or the relative
// humidity of its pair computed into `scratch` (len doubles).
const double* source_block(const member_source& src, std::size_t first, int len,
                           double* scratch);

// ---- Titles and labels ----

// Cuts a title for a statistic: after the first "hPa" when level is not 0, at (removing) the
// last '0' when it is; a title without that mark stays whole. Always leaves a terminated
// title of at most 127 characters, also when the caller's had no terminator.
void cut_title(char* description, int level);

// Cuts the title right after its first "hPa"; false (title kept, terminated) when there is
// none.
bool cut_title_after_hpa(char* description);

// Appends `label`, cut where the 128 bytes end.
void append_title(char* description, const char* label);

// "<prefix><base name of element>" into `label` (64 bytes).
void statistic_label(char* label, const char* prefix, int element);

// The header of `header`, the cut title with `label`, and the values (malloc()ed) into `out`.
void install_result(tervik_data4& out, const tervik_data4& header, int level,
                    const char* label, double* values);

// Index into n sorted values of rank fraction f, (int)(n × f), kept within 0 .. n−1.
int rank_index(int n, double f);

}  // namespace tervik::detail

#endif
