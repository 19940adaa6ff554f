#ifndef TERVIK_TOOLS_PICTURES_H
#define TERVIK_TOOLS_PICTURES_H

// Drawing the analysed products onto an SVG canvas.

#include <tervik/isoline.h>
#include <tervik/records.h>
#include <tervik/streamline.h>

#include <string>

#include "svg.h"

namespace tervik::cli {

// A canvas sized for the geographic box of a grid record.
Svg map_canvas(const tervik_data4& grid);

// The picture of a grid: its isolines at the given interval (0: a round interval chosen from
// the values) with labels, framed and titled with the grid's description.
std::string isoline_picture(const tervik_data4& grid, double interval);

// Isolines in dark grey with their labels (the text along the line, on a white halo).
void draw_isolines(Svg& svg, const tag_isoline_layer& layer);

// Filled bands, each band's rings in one even-odd path, coloured along a blue-red ramp by the
// band's colour index (-1 .. colours-1).
void draw_bands(Svg& svg, const tag_isoline_layer& layer, int colours);

// Station positions as dots with their values.
void draw_stations(Svg& svg, const tervik_data3& stations);

// Streamlines in blue with an arrowhead at each arrow mark.
void draw_streamlines(Svg& svg, const tagSTREAMLINE_LAYER& layer);

// A skew-T / log-p diagram of one sounding, 1050 to 100 hPa: isobars, isotherms, dry and
// pseudo-adiabats; the temperature (red) and dew-point (green) curves; the path of the
// parcel lifted from the first valid level with its LCL, LFC and EL marked; and a legend
// with the station number, CAPE, CIN, LI and K (n/a where the profile does not give them).
Svg skewt_diagram(const tag_tlogp_station& sounding);

}  // namespace tervik::cli

#endif
