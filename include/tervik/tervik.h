#ifndef TERVIK_TERVIK_H
#define TERVIK_TERVIK_H

// Everything Tervik exports.

#include <tervik/version.h>
#include <tervik/records.h>
#include <tervik/isoline.h>
#include <tervik/objective.h>
#include <tervik/streamline.h>
#include <tervik/sounding.h>
#include <tervik/diagnostics.h>
#include <tervik/ensemble.h>

#endif
