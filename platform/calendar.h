#ifndef TERVIK_PLATFORM_CALENDAR_H
#define TERVIK_PLATFORM_CALENDAR_H

// Date-time arithmetic in whole hours.
//
// The date-time is given by six ints (year with century, month 1-12, day, hour 0-23,
// minute 0-59, second 0-59) and is updated in place. `mode` names the calendar:
//   0  the Gregorian calendar;
//   1  a calendar of 365-day years without leap days, as some climate models keep.
// Returns 0 on success. Returns nonzero, changing nothing, for a null pointer, an unknown
// mode, a date-time that does not exist in the calendar, or a result outside years 1..9999.
enum { calendar_gregorian = 0, calendar_no_leap = 1 };

int timeadd(int* year, int* month, int* day, int* hour, int* minute, int* second,
            unsigned hours, int mode);
int timesub(int* year, int* month, int* day, int* hour, int* minute, int* second,
            unsigned hours, int mode);

#endif
