// Building blocks of COM classes: interface maps, object templates, creators, class factories, dispatch.
#pragma once

#include "atl/atlbase.h"
#include "atl/detail/class_factory.h"
#include "atl/detail/com_map.h"
#include "atl/detail/com_object.h"
#include "atl/detail/disp_event.h"
#include "atl/detail/dispatch_impl.h"
#include "atl/detail/object_root.h"
#include "atl/detail/object_with_site.h"
