// An advise sink that logs its calls.
#pragma once

#include "tests/support/fakes/call_log.h"
#include "tests/support/fakes/com_object.h"

#include <windows.h>

#include <objidl.h>

namespace quill::test {

class recording_sink final : public test_object<IAdviseSink>
{
public:
    void STDMETHODCALLTYPE OnDataChange(FORMATETC*, STGMEDIUM*) override { record.note("OnDataChange"); }
    void STDMETHODCALLTYPE OnViewChange(DWORD, LONG) override { record.note("OnViewChange"); }
    void STDMETHODCALLTYPE OnRename(IMoniker*) override { record.note("OnRename"); }
    void STDMETHODCALLTYPE OnSave() override { record.note("OnSave"); }
    void STDMETHODCALLTYPE OnClose() override { record.note("OnClose"); }

    call_log record{unlisted_calls::allow};
};

} // namespace quill::test
