#ifndef TERVIK_OBJECTIVE_DRIVER_DETAIL_H
#define TERVIK_OBJECTIVE_DRIVER_DETAIL_H

// The model first guess of the objective-analysis driver.

#include <string>

#include <tervik/records.h>

namespace tervik::detail {

// The path of the model grid that serves as first guess for the station file `file_name`,
// from model `model` (1..4) and element `kind` (0 pressure, 1 height, 2 temperature).
// False when there is none: no backslash, no "data", a station file name that does not
// begin with eight digits of a valid date and hour, fewer than three characters before the
// station file name's backslash (kinds 1 and 2), or a model or kind out of range.
bool model_file_name(const char* file_name, int model, int kind, std::string& path);

// Interpolates a model grid bilinearly onto nx x ny points, column i at lon_min + i*step and
// row j at lat_min + j*step, into `out`. A longitude outside the model grid is moved by a turn
// of 360 degrees when that brings it inside; a point still outside takes the value at the nearest point of
// the model grid's border (constant extrapolation). Missing model values drop out of a
// point's interpolation, the defined corners keeping their bilinear weights. False when the model grid is unusable (fewer than 2
// columns or rows, no values, steps zero or not finite) or a point has no defined corner.
bool interpolate_model(const tervik_data4& model, int nx, int ny, double lon_min,
                       double lat_min, double step, double* out);

}  // namespace tervik::detail

#endif
