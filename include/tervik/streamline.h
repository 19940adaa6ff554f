#ifndef TERVIK_STREAMLINE_H
#define TERVIK_STREAMLINE_H

// Streamlines with arrow marks through a u/v wind field.

#include <cstdint>
#include <vector>

#include <tervik/export.h>

#endif
