#ifndef TERVIK_OBJECTIVE_H
#define TERVIK_OBJECTIVE_H

// Objective analysis: scattered station values analysed onto a regular grid.

#include <tervik/export.h>
#include <tervik/isoline.h>
#include <tervik/records.h>

#endif
