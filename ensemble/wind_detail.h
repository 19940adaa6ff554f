#ifndef TERVIK_ENSEMBLE_WIND_DETAIL_H
#define TERVIK_ENSEMBLE_WIND_DETAIL_H

// The member pairs of the wind statistics and the steps every wind statistic shares.

#include <cstddef>
#include <vector>

#include <tervik/records.h>

namespace tervik::detail {

// Longest list of U or of V members that the wind statistics take.
constexpr int wind_list_capacity = 128;

// The U and V members at a level, listed apart in sequence order and paired by position.
struct wind_pairs {
  std::size_t header = 0;  // the first U member, whose header the result takes
  std::size_t points = 0;  // nx * ny of the header member
  int count = 0;           // pairs, the shorter list's length
  const double* u[wind_list_capacity] = {};
  const double* v[wind_list_capacity] = {};
};

// Checks the sequences, lists the U and V members (stopping after the member that fills
// either list) and checks the members of every pair against the first U member's grid;
// bad input fails here, before `copy_first_to` (the tervik_data4 forms' output, or null)
// receives the header of members[0]. Then fails, printing the statistic's own not-found
// text, when no U member is at the level; reports a full list; and fails with the shared
// not-found text when either list is empty. Returns false on failure, message printed.
bool open_wind_pairs(const char* fn, const std::vector<tervik_data4>& members,
                     const std::vector<int>& codes, int element, int level,
                     tervik_data4* copy_first_to, wind_pairs& pairs);

// Speed (m/s) and direction (degrees) of pair m at points [first, first + len).
void wind_block(const wind_pairs& pairs, int m, std::size_t first, int len, double* speed,
                double* direction);

// Prints the statistic's progress line with the number of pairs.
void report_wind_pairs(const char* fn, int element, int level, const wind_pairs& pairs);

// The header of the first U member, the cut title and `label` into a wind record.
void wind_record_header(tervik_data11& out, const tervik_data4& header, int level,
                        const char* label);

}  // namespace tervik::detail

#endif
