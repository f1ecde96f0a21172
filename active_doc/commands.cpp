// Browser commands that the viewer carries out.
#include "active_doc/active_doc_ctrl.h"
#include "logging/log_stream.h"
#include "retrieval/save_as/save_as.h"

STDMETHODIMP CActiveDocCtrl::QueryStatus(const GUID*, ULONG count, OLECMD commands[], OLECMDTEXT*)
{
    if (count && !commands)
        return E_POINTER;
    for (ULONG index = 0; index < count; ++index) {
        if (commands[index].cmdID == OLECMDID_SAVEAS || commands[index].cmdID == OLECMDID_PRINT) {
            // Enabled without "supported", and the first one only: the browser asks for one at a time.
            commands[index].cmdf = OLECMDF_ENABLED;
            break;
        }
    }
    return S_OK;
}

STDMETHODIMP CActiveDocCtrl::Exec(const GUID*, DWORD command, DWORD, VARIANT*, VARIANT*)
{
    QUILL_LOG(quill::log_level::debug) << "ACTIVEDOC " << address() << " Exec " << command;
    if (!viewer_)
        return OLECMDERR_E_NOTSUPPORTED;
    const CComPtr<IUnknown> keep_alive(GetUnknown());
    switch (command) {
    case OLECMDID_PRINT:
        // Deliberately answered as not supported, also after printing.
        viewer_.print();
        return OLECMDERR_E_NOTSUPPORTED;
    case OLECMDID_SAVEAS:
        quill::SaveDocumentAs(m_hWnd, path_.data());
        return S_OK;
    default:
        return OLECMDERR_E_NOTSUPPORTED;
    }
}
