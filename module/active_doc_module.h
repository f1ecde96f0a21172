// The module object: the lock count of the DLL and its registration.
#pragma once

#include "active_doc/identifiers.h"

#include <atlbase.h>

class active_doc_module : public CAtlDllModuleT<active_doc_module>
{
public:
    DECLARE_LIBID(quill::LIBID_QuillPDF_IE_ActiveDocLib)
    // The same script as the document class's: it is applied for the module and for the class.
    DECLARE_REGISTRY_APPID_RESOURCEID(quill::active_doc_registry_script,
                                      "{0F6D3B8A-E2C4-4A71-8B59-D3061A7C9E24}")
};
