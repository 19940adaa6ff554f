#ifndef TERVIK_DIAGNOSTICS_H
#define TERVIK_DIAGNOSTICS_H

// Finite-difference kinematic and thermodynamic fields on regular grids.

#include <tervik/export.h>

#endif
