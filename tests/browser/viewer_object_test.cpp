// The stand-in viewer as a COM object, without a browser.
#include "tests/browser/engine.h"
#include "tests/browser/registered_module.h"
#include "tests/support/viewer/viewer_class.h"

#include <atlbase.h>
#include <gtest/gtest.h>
#include <ocidl.h>

namespace quill::test {
namespace {

class ViewerObject : public testing::Test
{
protected:
    ViewerObject()
    {
        CLSID class_id = {};
        EXPECT_EQ(CLSIDFromProgID(viewer_prog_id, &class_id), S_OK);
        CComPtr<IUnknown> unknown;
        EXPECT_EQ(CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, IID_PPV_ARGS(&unknown)), S_OK);
        EXPECT_EQ(unknown->QueryInterface(viewer_interface_id, reinterpret_cast<void**>(&object)), S_OK);
    }

    // The arguments in call order.
    HRESULT call(DISPID method, std::vector<CComVariant> arguments, VARIANT* result = nullptr,
                 WORD flags = DISPATCH_METHOD)
    {
        std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
        DISPPARAMS parameters = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
        return object->Invoke(method, IID_NULL, LOCALE_SYSTEM_DEFAULT, flags, &parameters, result, nullptr,
                              nullptr);
    }

    ole_apartment apartment;
    cross_process_lock lock{L"registration"};
    viewer_registration registration;
    registered_library viewer{L"QuillPDFCtrl.dll"};
    CComPtr<IDispatch> object;
};

TEST_F(ViewerObject, OpensNothingBeforeItHasAWindow)
{
    CComVariant result;
    EXPECT_EQ(call(viewer_open, {CComVariant(L"C:\\missing.pdf")}, &result), S_OK);
    EXPECT_EQ(result.vt, VT_BOOL);
    EXPECT_EQ(result.boolVal, VARIANT_FALSE);
    CComVariant window;
    EXPECT_EQ(call(viewer_get_window, {}, &window), S_OK);
    EXPECT_EQ(window.vt, VT_UI8);
    EXPECT_EQ(window.ullVal, 0u);
}

TEST_F(ViewerObject, AcceptsEveryMethodWithoutAWindow)
{
    EXPECT_EQ(call(viewer_go_to_page, {CComVariant(2L)}), S_OK);
    EXPECT_EQ(call(viewer_go_to_page, {CComVariant(-7L)}), S_OK);
    EXPECT_EQ(call(viewer_set_zoom, {CComVariant(1.5)}), S_OK);
    EXPECT_EQ(call(viewer_print, {}), S_OK);
    EXPECT_EQ(call(viewer_first_setup, {}), S_OK);
    EXPECT_EQ(call(viewer_second_setup, {}), S_OK);
    EXPECT_EQ(call(viewer_notify_links, {CComVariant(0L), CComVariant(0x8702L)}), S_OK);
    EXPECT_EQ(call(viewer_notify_save_as, {CComVariant(0L), CComVariant(0x8711L)}), S_OK);
}

TEST_F(ViewerObject, RefusesInvalidCalls)
{
    EXPECT_EQ(call(2, {}), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(call(viewer_print, {}, nullptr, DISPATCH_PROPERTYGET), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(call(viewer_open, {}), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(call(viewer_print, {CComVariant(1L)}), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(call(viewer_go_to_page, {CComVariant(L"two")}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(call(viewer_set_zoom, {CComVariant(L"large")}), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(object->Invoke(viewer_print, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr),
              E_POINTER);
}

TEST_F(ViewerObject, IsDestroyedWithItsLastReference)
{
    EXPECT_FALSE(viewer.can_unload());
    object.Release();
    EXPECT_TRUE(viewer.can_unload());
}

} // namespace
} // namespace quill::test
