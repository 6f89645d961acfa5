#pragma once

#include <xcb/xcb.h>

// The keyboard extension's protocol. Its C header calls a field "explicit", which C++ keeps for itself.
#define explicit explicitComponents
#include <xcb/xkb.h>
#undef explicit
