// The index fixtures (the Weisman-Klemp sounding) live with the other synthetic soundings.
#include "convective_profile.h"
