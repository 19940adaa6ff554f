#include <cstdio>

#include <tervik/ensemble.h>

#include "ensemble/detail.h"

namespace {

// Base names of the element codes. T and Wind appear twice on purpose: two codes each carry
// the same quantity from different sources and read the same in titles.
const char* const element_names[ensemble_element_count] = {
    "MSL",      "GH",        "T",         "T",        "Td",
    "U",        "V",         "W",         "Isotachs", "TCC",
    "Wind",     "Wind",      "E",         "Q",        "RH",
    "Tadv",     "Div",       "Vor",       "AbsVor",   "VorAdv",
    "Theta",    "ThetaE",    "ThetaSE",   "KI",       "QFlux",
    "QFluxDiv", "FrontoGen", "PV",        "IPV",      "GHPV",
    "Rain",     "CAPE",      "TTD",       "TDiff850_500",
    "TDiff700_500",          "PVar",      "HVar",     "TVar",
    "SnowFall", "SnowDepth", "TMax",      "TMin",     "TMean",
    "TotalColumnWater"};

}  // namespace

const char* ensemble_element_name(int code) {
  if (code < 0 || code >= ensemble_element_count) return nullptr;
  return element_names[code];
}

// MSL is searched from the end, so that its header comes from the last matching member;
// every other element takes the first one.
int find_element(const std::vector<tervik_data4>& members, const std::vector<int>& codes,
                 int element, int level) {
  const std::size_t n = members.size() < codes.size() ? members.size() : codes.size();
  if (element == 0) {
    for (std::size_t i = n; i-- > 0;)
      if (codes[i] == element && members[i].level == level) return static_cast<int>(i);
    return -1;
  }
  for (std::size_t i = 0; i < n; ++i)
    if (codes[i] == element && members[i].level == level) return static_cast<int>(i);
  return -1;
}

namespace tervik::detail {

void statistic_label(char* label, const char* prefix, int element) {
  const char* name = ensemble_element_name(element);
  std::snprintf(label, 64, "%s%s", prefix, name ? name : "");
}

}  // namespace tervik::detail
