// The interfaces of the document object, and its creation by the class object.
#include "tests/document/document_fixture.h"

#include <docobj.h>
#include <gtest/gtest.h>
#include <ocidl.h>
#include <ole2.h>
#include <oleidl.h>
#include <urlmon.h>

#include <iterator>

namespace quill::test {
namespace {

using Microsoft::WRL::ComPtr;

constexpr IID automation_interface_id = {
    0xa4e19c37, 0x5d82, 0x4b0f, {0x96, 0xe3, 0x7c, 0x21, 0xd8, 0xf0, 0x5b, 0x6a}};

struct named_interface
{
    const char* name;
    const IID* id;
};

const named_interface offered[] = {
    {"IQuillPDF_IE_ActiveDoc", &automation_interface_id},
    {"IDispatch", &IID_IDispatch},
    {"IViewObjectEx", &IID_IViewObjectEx},
    {"IViewObject2", &IID_IViewObject2},
    {"IViewObject", &IID_IViewObject},
    {"IOleInPlaceObjectWindowless", &IID_IOleInPlaceObjectWindowless},
    {"IOleInPlaceObject", &IID_IOleInPlaceObject},
    {"IOleWindow", &IID_IOleWindow},
    {"IOleInPlaceActiveObject", &IID_IOleInPlaceActiveObject},
    {"IOleControl", &IID_IOleControl},
    {"IOleObject", &IID_IOleObject},
    {"IQuickActivate", &IID_IQuickActivate},
    {"IPersistStorage", &IID_IPersistStorage},
    {"IPersistStreamInit", &IID_IPersistStreamInit},
    {"IDataObject", &IID_IDataObject},
    {"IOleDocument", &IID_IOleDocument},
    {"IOleDocumentView", &IID_IOleDocumentView},
    {"IPersistFile", &IID_IPersistFile},
    {"IPersistMoniker", &IID_IPersistMoniker},
    {"IOleCommandTarget", &IID_IOleCommandTarget},
};
static_assert(std::size(offered) == 20);

const named_interface refused[] = {
    {"IObjectWithSite", &IID_IObjectWithSite},
    {"IConnectionPointContainer", &IID_IConnectionPointContainer},
    {"IPersistPropertyBag", &IID_IPersistPropertyBag},
    {"IPersistStream", &IID_IPersistStream},
    {"IProvideClassInfo", &IID_IProvideClassInfo},
    {"ISpecifyPropertyPages", &IID_ISpecifyPropertyPages},
    {"IMarshal", &IID_IMarshal},
    {"IServiceProvider", &IID_IServiceProvider},
    {"IOleClientSite", &IID_IOleClientSite},
    {"viewer", &viewer_interface_id},
};

QUILL_DOCUMENT_TEST(DocumentIdentity, OffersEachInterfaceWithOneIdentity)
{
    fixture.create();
    for (const auto& from : offered) {
        SCOPED_TRACE(from.name);
        ComPtr<IUnknown> source;
        ASSERT_EQ(fixture.document->QueryInterface(*from.id, &source), S_OK);
        ComPtr<IUnknown> identity;
        ASSERT_EQ(source->QueryInterface(IID_PPV_ARGS(&identity)), S_OK);
        EXPECT_EQ(identity.Get(), fixture.document.Get());
        for (const auto& to : offered) {
            SCOPED_TRACE(to.name);
            ComPtr<IUnknown> target;
            ASSERT_EQ(source->QueryInterface(*to.id, &target), S_OK);
            ASSERT_EQ(target->QueryInterface(IID_PPV_ARGS(identity.ReleaseAndGetAddressOf())), S_OK);
            EXPECT_EQ(identity.Get(), fixture.document.Get());
        }
    }
}

QUILL_DOCUMENT_TEST(DocumentIdentity, ReturnsTheSamePointerEachTime)
{
    fixture.create();
    for (const auto& wanted : offered) {
        SCOPED_TRACE(wanted.name);
        ComPtr<IUnknown> first;
        ComPtr<IUnknown> second;
        ASSERT_EQ(fixture.document->QueryInterface(*wanted.id, &first), S_OK);
        ASSERT_EQ(fixture.document->QueryInterface(*wanted.id, &second), S_OK);
        EXPECT_EQ(first.Get(), second.Get());
    }
}

QUILL_DOCUMENT_TEST(DocumentIdentity, RefusesOtherInterfacesAndClearsTheOutParameter)
{
    fixture.create();
    for (const auto& unwanted : refused) {
        SCOPED_TRACE(unwanted.name);
        void* out = &fixture;
        EXPECT_EQ(fixture.document->QueryInterface(*unwanted.id, &out), E_NOINTERFACE);
        EXPECT_EQ(out, nullptr);
    }
    EXPECT_EQ(fixture.document->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

QUILL_DOCUMENT_TEST(DocumentIdentity, LogsAnAddressInsideTheObject)
{
    fixture.create();
    const auto logged = std::strtoull(fixture.address.c_str(), nullptr, 16);
    const auto unknown = reinterpret_cast<std::uintptr_t>(fixture.document.Get());
    EXPECT_GE(unknown, logged);
    EXPECT_LT(unknown - logged, 4096u);
    EXPECT_EQ(fixture.address, pointer_text(reinterpret_cast<const void*>(logged)));
}

QUILL_DOCUMENT_TEST(DocumentIdentity, RefusesAggregation)
{
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(fixture.module.get_class_object(active_document_class_id, IID_PPV_ARGS(&factory)), S_OK);
    void* out = &fixture;
    EXPECT_EQ(factory->CreateInstance(fixture.host.site.client_site(), IID_IUnknown, &out),
              CLASS_E_NOAGGREGATION);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(factory->CreateInstance(fixture.host.site.client_site(), IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    out = &fixture;
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IObjectWithSite, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
}

QUILL_DOCUMENT_TEST(DocumentIdentity, KeepsTheModuleLoadedUntilItsDestruction)
{
    EXPECT_EQ(fixture.module.can_unload_now(), S_OK);
    fixture.create();
    EXPECT_EQ(fixture.module.can_unload_now(), S_FALSE);
    const auto view = fixture.as<IOleDocumentView>();
    EXPECT_EQ(fixture.module.can_unload_now(), S_FALSE);
}

QUILL_DOCUMENT_TEST(DocumentIdentity, HasAutomationWithoutAnyMember)
{
    fixture.create();
    const auto automation = fixture.as<IDispatch>();
    UINT count = 0;
    EXPECT_EQ(automation->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1u);
    wchar_t name[] = L"NoSuchMember";
    LPOLESTR names[] = {name};
    DISPID id = 0;
    EXPECT_TRUE(FAILED(automation->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id)));
    DISPPARAMS none{};
    EXPECT_TRUE(FAILED(automation->Invoke(1, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET, &none,
                                          nullptr, nullptr, nullptr)));
}

QUILL_DOCUMENT_TEST(DocumentIdentity, LogsItsCreationAndDestruction)
{
    fixture.create(); // reads the line of the construction
    EXPECT_EQ(fixture.take_log(), std::vector<std::string>{});
    fixture.log.skip();
    fixture.host.document = nullptr;
    EXPECT_EQ(fixture.document.Detach()->Release(), 0u);
    EXPECT_EQ(fixture.take_log(), std::vector<std::string>{"~@"});
}

QUILL_DOCUMENT_TEST(DocumentIdentity, NamesItsClass)
{
    fixture.create();
    CLSID id{};
    EXPECT_EQ(fixture.as<IPersistMoniker>()->GetClassID(&id), S_OK);
    EXPECT_TRUE(IsEqualCLSID(id, active_document_class_id));
    id = {};
    EXPECT_EQ(fixture.as<IPersistFile>()->GetClassID(&id), S_OK);
    EXPECT_TRUE(IsEqualCLSID(id, active_document_class_id));
    id = {};
    EXPECT_EQ(fixture.as<IPersistStreamInit>()->GetClassID(&id), S_OK);
    EXPECT_TRUE(IsEqualCLSID(id, active_document_class_id));
    id = {};
    EXPECT_EQ(fixture.as<IPersistStorage>()->GetClassID(&id), S_OK);
    EXPECT_TRUE(IsEqualCLSID(id, active_document_class_id));
    id = {};
    EXPECT_EQ(fixture.as<IOleObject>()->GetUserClassID(&id), S_OK);
    EXPECT_TRUE(IsEqualCLSID(id, active_document_class_id));
    EXPECT_EQ(fixture.as<IPersistMoniker>()->GetClassID(nullptr), E_POINTER);
}

} // namespace
} // namespace quill::test
