#ifndef TERVIK_SOUNDING_H
#define TERVIK_SOUNDING_H

// Upper-air soundings: the level and station records, thermodynamic primitives, lookups
// and characteristic levels along a profile, and stability and convective indices.
// Units throughout: pressure hPa, temperature and dew point deg C, height m (or the height
// unit of the sounding), wind direction degrees (from), wind speed m/s. The undefined
// value of a sounding is 9999.0.

#include <cstdint>
#include <vector>

#include <tervik/export.h>

// One level of a sounding. A profile is a contiguous array of levels from the ground
// upward (pressure decreasing); levels with `valid` false are skipped by every function.
// A default-constructed level is invalid with every double 9999.0.
struct tag_tlogp_layer {
  bool valid = false;
  double p = 9999.0;           // pressure, hPa
  double z = 9999.0;           // geopotential height; 9999.0 when missing
  double t = 9999.0;           // temperature, deg C
  double td = 9999.0;          // dew point, deg C
  double wind_dir = 9999.0;    // degrees (from); 9999.0 when missing
  double wind_speed = 9999.0;  // m/s; 9999.0 when missing
  double extra[14] = {9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0,
                      9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0, 9999.0};
};

// The profile of one station.
struct tag_tlogp_station {
  int32_t station;  // station number
  std::vector<tag_tlogp_layer> layers;
};

// ---- Thermodynamic primitives ----

// ---- Profile lookups and characteristic levels ----

// ---- Stability and convective indices ----

// ---- Per-station physics record and report ----

#endif
