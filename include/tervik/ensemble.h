#ifndef TERVIK_ENSEMBLE_H
#define TERVIK_ENSEMBLE_H

// Statistics over the members of an ensemble forecast, for scalar elements and wind.
//
// An ensemble reaches these functions as two index-aligned sequences: `members`, every
// member's grid of every element and level, and `codes`, the element code of each member
// (the table below). A statistic picks the members of one element at one level, computes
// point by point and writes a new grid into the caller's output record: the header of the
// first matching member (the last one for element 0, MSL), its title cut after "hPa" (at
// the last '0' for level 0) with the statistic's label appended, the contour suggestions,
// and a fresh value array that the record owns from then on.
//
// Missing values (9999.0) are not treated specially by the statistics: they enter the sums,
// orderings and speeds like any other number, so a point that is missing in one member
// carries that into the result. The derived members (isotachs, relative humidity) do mark
// missing input points as missing in their output.
//
// Every function returns 0 on success and -1 on failure, after printing a line on the
// standard error stream. Bad input (sequences of different lengths, an empty ensemble, a
// taking-part member without values or with a grid of another size than the header member,
// an element code outside the table) is reported before anything is written to the output
// record. Progress lines ("...: element=%d, level=%d, member_cnt=%d") also go to standard
// error.

#include <vector>

#include <tervik/export.h>
#include <tervik/records.h>

// ---- Element table ----
//
// code  name           code  name           code  name           code  name
//  0    MSL             11   Wind            22   ThetaSE         33   TDiff850_500
//  1    GH              12   E               23   KI              34   TDiff700_500
//  2    T               13   Q               24   QFlux           35   PVar
//  3    T               14   RH              25   QFluxDiv        36   HVar
//  4    Td              15   Tadv            26   FrontoGen       37   TVar
//  5    U               16   Div             27   PV              38   SnowFall
//  6    V               17   Vor             28   IPV             39   SnowDepth
//  7    W               18   AbsVor          29   GHPV            40   TMax
//  8    Isotachs        19   VorAdv          30   Rain            41   TMin
//  9    TCC             20   Theta           31   CAPE            42   TMean
// 10    Wind            21   ThetaE          32   TTD             43   TotalColumnWater
//
// Codes 2 and 3 both read T and codes 10 and 11 both read Wind. Only code 2 serves as the
// temperature of a relative-humidity derivation; codes 5 and 6 are the wind components.

// Number of element codes (0 .. ensemble_element_count - 1).
constexpr int ensemble_element_count = 44;

// The code that compute_wind_isotach and compute_rh write over the codes of the members they
// consume, one past the table, so that no statistic selects those members again.
constexpr int ensemble_consumed_code = 44;

// Base name of an element code ("MSL", "T", ...), or nullptr outside 0 .. 43.
TERVIK_API const char* ensemble_element_name(int code);

// Index of the member with codes[i] == element and members[i].level == level: the first one
// in sequence order, except for element 0 (MSL), where it is the last one. -1 when there is
// none. Only indices present in both sequences are searched. Never fails otherwise.
TERVIK_API int find_element(const std::vector<tervik_data4>& members,
                            const std::vector<int>& codes, int element, int level);

// ---- Scalar statistics ----
//
// Each statistic takes the members with code `element` at `level` (n of them) and writes, at
// every grid point, a statistic of their n values into `out` (header and title as above,
// label "<Prefix><name>" such as "MeanT" or "VarRH").
//
// Relative humidity is derived when asked for: if element is 14 (RH) and no member carries
// code 14 at the level, each temperature (code 2) and dew point (code 4) member at the level
// is remembered as it comes, and as soon as both are held their relative humidity (percent,
// from saturation vapour pressures) joins as one member and both are forgotten; an unpaired
// last one is ignored. The header is then the first dew-point member, and the contour
// suggestions read 10 for the interval and 100 for the end (and 0 for the start of the mean).
// Fails when no pair forms.
//
// Outside relative-humidity derivation the mean, minimum, maximum and median keep the header
// member's contour fields; variance and percentile propose contours from their result's
// range.

// Arithmetic mean Σx / n. The double argument is not used.
TERVIK_API int compute_griddata_mean(const std::vector<tervik_data4>& members,
                                     const std::vector<int>& codes, int element, int level,
                                     double unused, tervik_data4& out);

// Population variance (Σx² − (Σx)²/n) / n, in the element's unit squared (no square root).
// The double argument is not used.
TERVIK_API int compute_griddata_var(const std::vector<tervik_data4>& members,
                                    const std::vector<int>& codes, int element, int level,
                                    double unused, tervik_data4& out);

// Smallest value. The double argument is not used.
TERVIK_API int compute_griddata_min(const std::vector<tervik_data4>& members,
                                    const std::vector<int>& codes, int element, int level,
                                    double unused, tervik_data4& out);

// Largest value. The double argument is not used.
TERVIK_API int compute_griddata_max(const std::vector<tervik_data4>& members,
                                    const std::vector<int>& codes, int element, int level,
                                    double unused, tervik_data4& out);

// The value of rank (int)(n × f) among the n values sorted ascending (0-based, truncated, no
// interpolation): f = 0.5 gives the middle value for odd n and the upper middle one for even
// n. A rank outside 0 .. n−1 (f below 0 or from 1 up, or NaN) takes the nearest end.
TERVIK_API int compute_griddata_median(const std::vector<tervik_data4>& members,
                                       const std::vector<int>& codes, int element, int level,
                                       double f, tervik_data4& out);

// Percentile p in (0, 1): with the values a sorted ascending, k = (int)(n × p) and
// w = n × p − k, the result is a[k−1] + (a[k] − a[k−1]) × w. Both ranks are clamped to
// 0 .. n−1, so n × p below 1 gives the smallest value and p = 1 the largest. The label is the
// base name followed by "<P>%Percentile" with P = (int)(p × 100) as computed in double
// (p = 0.29 reads "28"). Its not-found message names compute_griddata_median().
TERVIK_API int compute_griddata_percentile(const std::vector<tervik_data4>& members,
                                           const std::vector<int>& codes, int element,
                                           int level, double p, tervik_data4& out);

// ---- Wind statistics ----
//
// The wind members are always the U (code 5) and V (code 6) members at `level`; `element`
// only appears in messages. U and V members are listed separately in sequence order, each
// list holding at most 128 members (the scan stops after the member that fills either list,
// with a message), and the m-th U member pairs with the m-th V member; the pairs are as many
// as the shorter list. At every point each pair gives a speed (m/s) and a direction (degrees
// the wind comes from, 0 .. 360) as uv2magdir does. The header is the first U member's.
//
// The tervik_data4 forms first copy the header of members[0] into `out`; a failure after
// that copy (no U member, an empty list, memory) leaves that header there. Bad input is
// caught before it. The tervik_data11 forms write u and v (m/s) from the chosen speed and
// direction. Every wind statistic prints the texts "compute_winddata_mean(): element(%d)
// not found" for an empty list and "compute_winddata_mean(): too many wind element(%d)
// exceeds upper limit (%d)" for a full list.

// Mean speed ("MeanIsotachs"); the double argument is not used.
TERVIK_API int compute_winddata_mean(const std::vector<tervik_data4>& members,
                                     const std::vector<int>& codes, int element, int level,
                                     double unused, tervik_data4& out);

// Mean speed with the arithmetic mean of the directions in degrees (not a vector mean: 350
// and 10 average to 180), as u and v ("MeanWind"); the double argument is not used.
TERVIK_API int compute_winddata_mean(const std::vector<tervik_data4>& members,
                                     const std::vector<int>& codes, int element, int level,
                                     double unused, tervik_data11& out);

// Population variance of the speed, (m/s)² ("VarIsotachs"), with contours proposed from its
// range; the double argument is not used.
TERVIK_API int compute_winddata_var(const std::vector<tervik_data4>& members,
                                    const std::vector<int>& codes, int element, int level,
                                    double unused, tervik_data4& out);

// Smallest speed ("MinIsotachs"); the double argument is not used.
TERVIK_API int compute_winddata_min(const std::vector<tervik_data4>& members,
                                    const std::vector<int>& codes, int element, int level,
                                    double unused, tervik_data4& out);

// The wind of the pair with the smallest speed, the earlier pair on a tie ("MinWind").
TERVIK_API int compute_winddata_min(const std::vector<tervik_data4>& members,
                                    const std::vector<int>& codes, int element, int level,
                                    double unused, tervik_data11& out);

// Largest speed ("MaxIsotachs"); the double argument is not used.
TERVIK_API int compute_winddata_max(const std::vector<tervik_data4>& members,
                                    const std::vector<int>& codes, int element, int level,
                                    double unused, tervik_data4& out);

// The wind of the pair with the largest speed, the earlier pair on a tie ("MaxWind").
TERVIK_API int compute_winddata_max(const std::vector<tervik_data4>& members,
                                    const std::vector<int>& codes, int element, int level,
                                    double unused, tervik_data11& out);

// The speed of rank (int)(n × f) among the sorted speeds, clamped as for
// compute_griddata_median ("MedianWind").
TERVIK_API int compute_winddata_median(const std::vector<tervik_data4>& members,
                                       const std::vector<int>& codes, int element, int level,
                                       double f, tervik_data4& out);

// The speed of rank (int)(n × f) with its own direction, as u and v ("MedianWind"). When
// several pairs share that speed, the earliest one's direction is taken.
TERVIK_API int compute_winddata_median(const std::vector<tervik_data4>& members,
                                       const std::vector<int>& codes, int element, int level,
                                       double f, tervik_data11& out);

// ---- Derived members ----
//
// Both functions consume a pair of members: they write ensemble_consumed_code (44) over the
// codes of the members they use, so that repeated calls take the pairs one after the other
// and return -1 (silently) once no pair is left. When the first member of a pair is found
// but the second is not, the first is still consumed. Bad input (sequences of different
// lengths, a member without values or of another grid size) is reported and leaves the codes
// untouched.

// Wind speed √(u² + v²) / scale of the first U (code 5) and V (code 6) members at `level`,
// missing (9999.0) where either component is. Header of the V member; a title holding "hPa"
// is cut after it and gets "Isotachs(unit:m/s)", any other title is kept as it is. Contours:
// interval 8, start floor((8 + lo) / 8) × 8 and end floor(hi / 8) × 8 over the speed range.
TERVIK_API int compute_wind_isotach(const std::vector<tervik_data4>& members,
                                    std::vector<int>& codes, int level, double scale,
                                    tervik_data4& out);

// Relative humidity (percent) of the first T (code 2) and Td (code 4) members at `level`,
// missing where either is. Header of the Td member; a title holding "hPa" is cut after it
// and gets "RH(unit:%)". Contours 0 to 100 by 10. The double argument is not used.
TERVIK_API int compute_rh(const std::vector<tervik_data4>& members, std::vector<int>& codes,
                          int level, double unused, tervik_data4& out);

#endif
