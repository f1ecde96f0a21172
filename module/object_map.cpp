// The module's classes, in the order of their registration.
#include "active_doc/active_doc_ctrl.h"
#include "sharepoint/sharepoint_bho.h"

#include <atlcom.h>

namespace quill {

OBJECT_ENTRY_AUTO(CLSID_ActiveDocCtrl, CActiveDocCtrl)
OBJECT_ENTRY_AUTO(CLSID_SharepointBrowserHelperObject, sharepoint_bho)

} // namespace quill
