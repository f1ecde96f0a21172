// The framework's base: value types, critical sections, the module object, registration.
#pragma once

#include "atl/atlcomcli.h"
#include "atl/atlcore.h"
#include "atl/atldef.h"
#include "atl/atlexcept.h"
#include "atl/detail/handles.h"
#include "atl/detail/module.h"
#include "atl/detail/object_map.h"
#include "atl/detail/thread_model.h"
#include "atl/detail/type_library.h"
#include "atl/statreg.h"
