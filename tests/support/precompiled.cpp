// Compiles the precompiled header.
#include "tests/support/precompiled.h"
