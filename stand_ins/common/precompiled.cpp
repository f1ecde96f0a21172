// Compiles the precompiled header.
#include "stand_ins/common/precompiled.h"
