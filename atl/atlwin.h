// Windows of the framework: CWindow, CWindowImpl, message maps, and the module's window classes.
#pragma once

#include "atl/detail/message_map.h"
#include "atl/detail/window.h"
#include "atl/detail/window_class.h"
#include "atl/detail/window_impl.h"
