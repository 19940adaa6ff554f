#ifndef TERVIK_ISOLINE_H
#define TERVIK_ISOLINE_H

// Isolines (contour lines) of a regular grid: the layer that holds them, the builder
// interface through which tracers deliver geometry, and the tracers themselves.

#include <cstdint>
#include <vector>

#include <tervik/export.h>
#include <tervik/records.h>

// ---- Isoline layer ----

// ---- Builders ----

// ---- Contour tracer ----

// ---- Filled-contour tracer ----

// ---- Analysis parameters and driver ----

#endif
