// The interfaces of a control apart from its activation.
#include "tests/framework/control_fixture.h"
#include "tests/framework/recording_sink.h"
#include "tests/support/scopes.h"

namespace quill::test {
namespace {

class FrameworkControlInterfaces : public control_fixture
{
protected:
    void TearDown() override
    {
        control.Release();
        EXPECT_EQ(sink.references(), 0);
        control_fixture::TearDown();
    }

    recording_sink sink;
};

TEST_F(FrameworkControlInterfaces, EveryInterfaceIsOneObject)
{
    const IID* const interfaces[] = {
        &__uuidof(ITestDual),   &IID_IDispatch,          &IID_IViewObjectEx,
        &IID_IViewObject2,      &IID_IViewObject,        &IID_IOleInPlaceObjectWindowless,
        &IID_IOleInPlaceObject, &IID_IOleWindow,         &IID_IOleInPlaceActiveObject,
        &IID_IOleControl,       &IID_IOleObject,         &IID_IQuickActivate,
        &IID_IPersistStorage,   &IID_IPersistStreamInit, &IID_IDataObject,
        &IID_IOleDocument,      &IID_IOleDocumentView,   &IID_IPersistFile,
        &IID_IPersistMoniker,   &IID_IOleCommandTarget};
    for (const IID* const iid : interfaces) {
        ATL::CComPtr<IUnknown> found;
        ASSERT_EQ(control->QueryInterface(*iid, reinterpret_cast<void**>(&found)), S_OK);
        EXPECT_TRUE(ATL::AtlIsEqualObject(found, control->GetUnknown()));
    }
}

TEST_F(FrameworkControlInterfaces, ClientSiteIsReturned)
{
    EXPECT_EQ(control->GetClientSite(nullptr), E_POINTER);
    ATL::CComPtr<IOleClientSite> site;
    EXPECT_EQ(control->GetClientSite(&site), S_OK);
    EXPECT_EQ(site.p, nullptr);
    control->SetClientSite(container.get());
    EXPECT_EQ(control->GetClientSite(&site), S_OK);
    EXPECT_EQ(site.p, static_cast<IOleClientSite*>(container.get()));
    EXPECT_EQ(control->m_spAmbientDispatch.p, static_cast<IDispatch*>(container.get()));
    site.Release();
    close();
    EXPECT_EQ(control->m_spAmbientDispatch.p, nullptr);
}

TEST_F(FrameworkControlInterfaces, RegistryDescribesTheClass)
{
    const std::wstring key = L"Software\\Classes\\CLSID\\{6B1F0E52-93C7-4D0A-A6D4-27E85C1B9F60}";
    const registry_key_scope class_key(HKEY_LOCAL_MACHINE, key);
    class_key.set_string(nullptr, L"Framework test control");
    const registry_key_scope misc(HKEY_LOCAL_MACHINE, key + L"\\MiscStatus\\1");
    misc.set_string(nullptr, L"131473");
    const registry_key_scope verb(HKEY_LOCAL_MACHINE, key + L"\\verb\\0");
    verb.set_string(nullptr, L"&Open,0,2");

    DWORD status = 1;
    EXPECT_EQ(control->GetMiscStatus(DVASPECT_CONTENT, &status), S_OK);
    EXPECT_EQ(status, 131473u);
    EXPECT_EQ(control->GetMiscStatus(DVASPECT_CONTENT, nullptr), E_POINTER);

    LPOLESTR name = nullptr;
    EXPECT_EQ(control->GetUserType(USERCLASSTYPE_FULL, &name), S_OK);
    EXPECT_STREQ(name, L"Framework test control");
    CoTaskMemFree(name);
    EXPECT_EQ(control->GetUserType(USERCLASSTYPE_FULL, nullptr), E_POINTER);

    ATL::CComPtr<IEnumOLEVERB> verbs;
    ASSERT_EQ(control->EnumVerbs(&verbs), S_OK);
    OLEVERB found{};
    EXPECT_EQ(verbs->Next(1, &found, nullptr), S_OK);
    EXPECT_EQ(found.lVerb, 0);
    EXPECT_STREQ(found.lpszVerbName, L"&Open");
    CoTaskMemFree(found.lpszVerbName);
    EXPECT_EQ(control->EnumVerbs(nullptr), E_POINTER);

    CLSID clsid{};
    EXPECT_EQ(control->GetUserClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, CLSID_test_control);
    EXPECT_EQ(control->GetUserClassID(nullptr), E_POINTER);
}

TEST_F(FrameworkControlInterfaces, OptionalMethodsOfAnEmbeddedObjectAreNotImplemented)
{
    IMoniker* moniker = reinterpret_cast<IMoniker*>(1);
    EXPECT_EQ(control->IOleObjectImpl<test_control>::GetMoniker(1, 1, &moniker), E_NOTIMPL);
    EXPECT_EQ(moniker, nullptr);
    EXPECT_EQ(control->IOleObjectImpl<test_control>::GetMoniker(1, 1, nullptr), E_POINTER);
    IDataObject* data = reinterpret_cast<IDataObject*>(1);
    EXPECT_EQ(control->GetClipboardData(0, &data), E_NOTIMPL);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(control->SetHostNames(L"host", L"document"), S_OK);
    EXPECT_EQ(control->SetMoniker(0, nullptr), E_NOTIMPL);
    EXPECT_EQ(control->InitFromData(nullptr, FALSE, 0), E_NOTIMPL);
    EXPECT_EQ(control->SetColorScheme(nullptr), E_NOTIMPL);
    EXPECT_EQ(control->Update(), S_OK);
    EXPECT_EQ(control->IsUpToDate(), S_OK);
}

TEST_F(FrameworkControlInterfaces, SinksAreNotifiedOfSavingAndClosing)
{
    IEnumSTATDATA* enumerator = reinterpret_cast<IEnumSTATDATA*>(1);
    EXPECT_EQ(control->EnumAdvise(&enumerator), E_FAIL);
    EXPECT_EQ(enumerator, nullptr);
    EXPECT_EQ(control->Unadvise(1), OLE_E_NOCONNECTION);
    DWORD connection = 5;
    EXPECT_EQ(control->Advise(nullptr, &connection), E_POINTER);
    EXPECT_EQ(connection, 0u);
    EXPECT_EQ(control->Advise(&sink, nullptr), E_POINTER);
    ASSERT_EQ(control->Advise(&sink, &connection), S_OK);
    ASSERT_EQ(control->EnumAdvise(&enumerator), S_OK);
    enumerator->Release();

    control->SetClientSite(container.get());
    EXPECT_EQ(control->Close(OLECLOSE_SAVEIFDIRTY), S_OK);
    EXPECT_EQ(sink.record.take(), calls{"OnClose"});
    control->SetDirty(TRUE);
    EXPECT_EQ(control->Close(OLECLOSE_NOSAVE), S_OK);
    EXPECT_EQ(sink.record.take(), calls{"OnClose"});
    EXPECT_EQ(container->record.take(), calls{});
    EXPECT_EQ(control->Close(OLECLOSE_SAVEIFDIRTY), S_OK);
    EXPECT_EQ(sink.record.take(), (calls{"OnSave", "OnClose"}));
    EXPECT_EQ(container->record.take(), calls{"SaveObject"});
    EXPECT_EQ(control->Unadvise(connection), S_OK);
    close();
}

TEST_F(FrameworkControlInterfaces, StorageKeepsWhatTheStreamPersistenceWrites)
{
    IPersistStorage* const persist = control.p;
    EXPECT_EQ(persist->IsDirty(), S_FALSE);
    EXPECT_EQ(persist->Load(nullptr), E_POINTER);
    EXPECT_EQ(persist->Save(nullptr, FALSE), E_POINTER);
    ATL::CComPtr<IStorage> storage;
    ASSERT_EQ(StgCreateDocfile(nullptr,
                               STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE | STGM_DELETEONRELEASE, 0,
                               &storage),
              S_OK);
    EXPECT_EQ(persist->Load(storage), STG_E_FILENOTFOUND) << "the storage is empty";
    control->stored = 4711;
    EXPECT_EQ(persist->Save(storage, FALSE), S_OK);
    EXPECT_EQ(persist->InitNew(storage), S_OK);
    EXPECT_EQ(control->stored, 0);
    EXPECT_EQ(persist->Load(storage), S_OK);
    EXPECT_EQ(control->stored, 4711);
    EXPECT_EQ(persist->SaveCompleted(storage), S_OK);
    EXPECT_EQ(persist->HandsOffStorage(), S_OK);
    CLSID clsid{};
    EXPECT_EQ(persist->GetClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, CLSID_test_control);
    EXPECT_EQ(persist->GetClassID(nullptr), E_POINTER);
}

TEST_F(FrameworkControlInterfaces, KeysAreOfferedToTheSite)
{
    IOleInPlaceActiveObject* const active = control.p;
    EXPECT_EQ(active->TranslateAccelerator(nullptr), E_POINTER);
    MSG key{};
    key.message = WM_KEYDOWN;
    key.wParam = 'X';
    EXPECT_EQ(active->TranslateAccelerator(&key), S_FALSE) << "no site";
    control->SetClientSite(container.get());
    const std::string offered = "TranslateAccelerator(88, 0)";
    EXPECT_EQ(active->TranslateAccelerator(&key), S_OK);
    container->record.make_return(offered, S_FALSE);
    EXPECT_EQ(active->TranslateAccelerator(&key), S_FALSE);
    container->record.make_return(offered, E_FAIL);
    EXPECT_EQ(active->TranslateAccelerator(&key), S_FALSE);
    EXPECT_EQ(container->record.take(), calls(3, offered));
    close();
}

TEST_F(FrameworkControlInterfaces, DocumentWindowDeactivatesTheUserInterface)
{
    control->SetClientSite(container.get());
    ASSERT_EQ(do_verb(OLEIVERB_UIACTIVATE), S_OK);
    EXPECT_EQ(control->OnDocWindowActivate(TRUE), S_OK);
    EXPECT_TRUE(control->m_bUIActive);
    EXPECT_EQ(control->OnDocWindowActivate(FALSE), S_OK);
    EXPECT_FALSE(control->m_bUIActive);
    EXPECT_EQ(control->OnFrameWindowActivate(FALSE), S_OK);
    EXPECT_EQ(control->ResizeBorder(nullptr, nullptr, TRUE), S_OK);
    EXPECT_EQ(control->EnableModeless(FALSE), S_OK);
    close();
}

TEST_F(FrameworkControlInterfaces, WindowIsReturnedWhileThereIsOne)
{
    IOleInPlaceObjectWindowless* const in_place = control.p;
    IOleInPlaceActiveObject* const active = control.p;
    HWND window = container->window;
    EXPECT_EQ(in_place->GetWindow(&window), E_FAIL);
    EXPECT_EQ(window, nullptr);
    EXPECT_EQ(in_place->GetWindow(nullptr), E_POINTER);
    EXPECT_EQ(active->GetWindow(nullptr), E_POINTER);
    control->SetClientSite(container.get());
    ASSERT_EQ(do_verb(OLEIVERB_SHOW), S_OK);
    EXPECT_EQ(in_place->GetWindow(&window), S_OK);
    EXPECT_EQ(window, control->m_hWnd);
    window = nullptr;
    EXPECT_EQ(active->GetWindow(&window), S_OK);
    EXPECT_EQ(window, control->m_hWnd);
    LRESULT result = 1;
    EXPECT_EQ(in_place->OnWindowMessage(WM_APP, 0, 0, &result), S_FALSE)
        << "the window gets its messages itself";
    EXPECT_EQ(result, 0);
    IDropTarget* target = reinterpret_cast<IDropTarget*>(1);
    EXPECT_EQ(in_place->GetDropTarget(&target), E_NOTIMPL);
    EXPECT_EQ(target, nullptr);
    EXPECT_EQ(in_place->ReactivateAndUndo(), E_NOTIMPL);
    close();
}

TEST_F(FrameworkControlInterfaces, EventsAreFrozenInPairs)
{
    IOleControl* const ole_control = control.p;
    EXPECT_EQ(ole_control->FreezeEvents(TRUE), S_OK);
    EXPECT_EQ(ole_control->FreezeEvents(TRUE), S_OK);
    EXPECT_EQ(control->m_nFreezeEvents, 2);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(ole_control->FreezeEvents(FALSE), S_OK);
    EXPECT_EQ(control->m_nFreezeEvents, 0);
    EXPECT_EQ(ole_control->OnAmbientPropertyChange(DISPID_UNKNOWN), S_OK);
    EXPECT_EQ(ole_control->GetControlInfo(nullptr), E_NOTIMPL);
    EXPECT_EQ(ole_control->OnMnemonic(nullptr), E_NOTIMPL);
}

} // namespace
} // namespace quill::test
