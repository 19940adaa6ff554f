#ifndef TERVIK_EXPORT_H
#define TERVIK_EXPORT_H

// TERVIK_API marks what libtervik.so exports; everything else is hidden.
#if defined(TERVIK_BUILDING)
#define TERVIK_API __attribute__((visibility("default")))
#else
#define TERVIK_API
#endif

#endif
