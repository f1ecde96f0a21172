// Controls: CComControl and the interface templates that a control derives from.
#pragma once

#include "atl/atlcom.h"
#include "atl/atlwin.h"
#include "atl/detail/control.h"
#include "atl/detail/control_base.h"
#include "atl/detail/data_object_impl.h"
#include "atl/detail/in_place_context.h"
#include "atl/detail/ole_control_impl.h"
#include "atl/detail/ole_in_place_active_object_impl.h"
#include "atl/detail/ole_in_place_object_impl.h"
#include "atl/detail/ole_object_impl.h"
#include "atl/detail/persist_storage_impl.h"
#include "atl/detail/quick_activate_impl.h"
#include "atl/detail/view_object_impl.h"
