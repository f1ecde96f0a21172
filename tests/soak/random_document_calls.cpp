#include "tests/soak/random_document.h"

#include <windows.h>

#include <docobj.h>
#include <gtest/gtest.h>
#include <ocidl.h>
#include <ole2.h>
#include <urlmon.h>

namespace quill::soak {
namespace {

using Microsoft::WRL::ComPtr;

} // namespace

void random_documents::call_ole_object(hosted_document& document)
{
    const auto object = document.as<IOleObject>();
    const bool null = random_.chance(4);
    SIZEL size{random_.number(), random_.number()};
    const auto aspect = static_cast<DWORD>(random_.one_of<LONG>({1, 1, 1, 0, 2, 16, random_.number()}));
    CLSID id{};
    LPOLESTR text = nullptr;
    DWORD status = 0;
    ComPtr<IMoniker> moniker;
    ComPtr<IEnumOLEVERB> verbs;
    ComPtr<IOleClientSite> site;
    switch (random_.below(14)) {
    case 0:
        object->SetClientSite(null ? nullptr : document.host.site.client_site());
        break;
    case 1:
        object->GetClientSite(null ? nullptr : site.GetAddressOf());
        break;
    case 2:
        object->SetHostNames(null ? nullptr : L"host", nullptr);
        break;
    case 3:
        object->Close(static_cast<DWORD>(random_.number()));
        break;
    case 4:
        object->GetMoniker(static_cast<DWORD>(random_.number()), 1, null ? nullptr : moniker.GetAddressOf());
        break;
    case 5:
        object->EnumVerbs(null ? nullptr : verbs.GetAddressOf());
        break;
    case 6:
        object->Update();
        object->IsUpToDate();
        break;
    case 7:
        object->GetUserClassID(null ? nullptr : &id);
        break;
    case 8:
        object->GetUserType(static_cast<DWORD>(random_.number()), null ? nullptr : &text);
        CoTaskMemFree(text);
        break;
    case 9:
        object->SetExtent(aspect, null ? nullptr : &size);
        break;
    case 10:
        object->GetExtent(aspect, null ? nullptr : &size);
        break;
    case 11:
        object->GetMiscStatus(aspect, null ? nullptr : &status);
        break;
    case 12:
        object->SetColorScheme(nullptr);
        break;
    default:
        object->SetMoniker(static_cast<DWORD>(random_.number()), nullptr);
    }
}

// Unadvises with cookies that were returned, and with others.
void random_documents::call_advise(hosted_document& document)
{
    DWORD cookie = 0;
    DWORD other = 0;
    ComPtr<IEnumSTATDATA> connections;
    const auto object = document.as<IOleObject>();
    const bool null = random_.chance(3);
    object->Advise(nullptr, null ? nullptr : &cookie);
    object->Unadvise(random_.chance(2) ? cookie : static_cast<DWORD>(random_.number()));
    object->EnumAdvise(null ? nullptr : connections.GetAddressOf());
    const auto view = document.as<IViewObjectEx>();
    view->SetAdvise(static_cast<DWORD>(random_.number()), 0, nullptr);
    view->GetAdvise(null ? nullptr : &cookie, null ? nullptr : &other, nullptr);
}

void random_documents::call_view(hosted_document& document)
{
    const auto view = document.as<IOleDocumentView>();
    const bool null = random_.chance(4);
    ComPtr<IOleInPlaceSite> site;
    ComPtr<IUnknown> owner;
    ComPtr<IOleDocumentView> copy;
    RECT rect = random_.rectangle();
    switch (random_.below(13)) {
    case 0:
        view->SetInPlaceSite(null ? nullptr : document.host.site.in_place_site());
        break;
    case 1:
        view->GetInPlaceSite(null ? nullptr : site.GetAddressOf());
        break;
    case 2:
        view->GetDocument(null ? nullptr : owner.GetAddressOf());
        break;
    case 3:
        view->SetRect(null ? nullptr : &rect);
        break;
    case 4:
        view->GetRect(null ? nullptr : &rect);
        break;
    case 5:
        view->SetRectComplex(&rect, nullptr, nullptr, nullptr);
        break;
    case 6:
    case 7:
        view->Show(random_.one_of<BOOL>({TRUE, FALSE, TRUE, 17}));
        break;
    case 8:
    case 9:
        view->UIActivate(random_.one_of<BOOL>({TRUE, FALSE}));
        break;
    case 10:
        view->CloseView(static_cast<DWORD>(random_.number()));
        break;
    case 11:
        view->SaveViewState(nullptr);
        view->ApplyViewState(nullptr);
        view->Open();
        break;
    default:
        view->Clone(nullptr, null ? nullptr : copy.GetAddressOf());
    }
}

void random_documents::call_document(hosted_document& document)
{
    const auto object = document.as<IOleDocument>();
    const bool null = random_.chance(3);
    DWORD status = 0;
    ComPtr<IOleDocumentView> view;
    ComPtr<IEnumOleDocumentViews> views;
    object->CreateView(random_.chance(2) ? nullptr : document.host.site.in_place_site(), nullptr, 0,
                       null ? nullptr : view.GetAddressOf());
    object->GetDocMiscStatus(null ? nullptr : &status);
    view.Reset();
    object->EnumViews(random_.chance(2) ? nullptr : views.GetAddressOf(),
                      null ? nullptr : view.GetAddressOf());
}

void random_documents::call_in_place(hosted_document& document)
{
    const auto object = document.as<IOleInPlaceObjectWindowless>();
    const bool null = random_.chance(4);
    RECT position = random_.rectangle();
    RECT clip = random_.rectangle();
    HWND window = nullptr;
    LRESULT result = 0;
    ComPtr<IDropTarget> target;
    switch (random_.below(8)) {
    case 0:
        object->GetWindow(null ? nullptr : &window);
        break;
    case 1:
        object->ContextSensitiveHelp(static_cast<BOOL>(random_.number()));
        break;
    case 2:
        object->InPlaceDeactivate();
        break;
    case 3:
        object->UIDeactivate();
        break;
    case 4:
    case 5:
        object->SetObjectRects(null ? nullptr : &position, random_.chance(5) ? nullptr : &clip);
        break;
    case 6: {
        const message sent = any_message();
        object->OnWindowMessage(sent.number, sent.wparam, sent.lparam, null ? nullptr : &result);
        break;
    }
    default:
        object->ReactivateAndUndo();
        object->GetDropTarget(null ? nullptr : target.GetAddressOf());
    }
}

void random_documents::call_active(hosted_document& document)
{
    const auto object = document.as<IOleInPlaceActiveObject>();
    MSG key{};
    key.hwnd = any_window(document);
    key.message = random_.one_of<UINT>({WM_KEYDOWN, WM_CHAR, WM_SYSKEYDOWN, WM_MOUSEMOVE});
    key.wParam = static_cast<WPARAM>(random_.one_of<LONG>({'A', 'C', 'F', 'P', 'O', random_.number()}));
    object->TranslateAccelerator(random_.chance(5) ? nullptr : &key);
    object->OnFrameWindowActivate(random_.chance(2));
    object->OnDocWindowActivate(static_cast<BOOL>(random_.number()));
    object->ResizeBorder(any_rectangle(), random_.chance(2) ? nullptr : &document.host.frame,
                         random_.chance(2));
    object->EnableModeless(random_.chance(2));
}

void random_documents::call_command(hosted_document& document)
{
    const auto target = document.as<IOleCommandTarget>();
    OLECMD commands[3] = {
        {OLECMDID_PRINT, 0}, {OLECMDID_SAVEAS, 0}, {static_cast<ULONG>(random_.number()), 0}};
    const bool null = random_.chance(4);
    target->QueryStatus(random_.chance(2) ? nullptr : &IID_IUnknown, static_cast<ULONG>(random_.below(4)),
                        null ? nullptr : commands, nullptr);
    VARIANT in{};
    VARIANT out{};
    target->Exec(nullptr, static_cast<DWORD>(random_.one_of<LONG>({4, 6, 6, random_.number()})),
                 static_cast<DWORD>(random_.number()), null ? nullptr : &in, null ? nullptr : &out);
}

void random_documents::call_drawing(hosted_document& document)
{
    const auto view = document.as<IViewObjectEx>();
    const auto aspect = static_cast<DWORD>(random_.one_of<LONG>({1, 1, 0, 2, 16, 32, random_.number()}));
    const bool null = random_.chance(4);
    DWORD number = 0;
    SIZEL size{};
    RECTL bounds{random_.number(), random_.number(), random_.number(), random_.number()};
    RECT rect{};
    LOGPALETTE* colors = nullptr;
    const HDC device = CreateCompatibleDC(nullptr);
    view->Draw(aspect, random_.number(), nullptr, nullptr, nullptr, null ? nullptr : device,
               random_.chance(3) ? nullptr : &bounds, nullptr, nullptr, 0);
    DeleteDC(device);
    view->GetColorSet(aspect, 0, nullptr, nullptr, nullptr, null ? nullptr : &colors);
    CoTaskMemFree(colors);
    view->Freeze(aspect, 0, nullptr, null ? nullptr : &number);
    view->Unfreeze(static_cast<DWORD>(random_.number()));
    view->GetExtent(aspect, 0, nullptr, null ? nullptr : &size);
    view->GetRect(aspect, null ? nullptr : &bounds);
    view->GetViewStatus(null ? nullptr : &number);
    view->QueryHitPoint(aspect, any_rectangle(), POINT{random_.number(), random_.number()}, random_.number(),
                        null ? nullptr : &number);
    rect = random_.rectangle();
    view->QueryHitRect(aspect, &rect, null ? nullptr : &rect, 0, null ? nullptr : &number);
}

void random_documents::call_control(hosted_document& document)
{
    const auto control = document.as<IOleControl>();
    CONTROLINFO info{};
    info.cb = random_.chance(2) ? sizeof info : 0;
    MSG key{};
    const bool null = random_.chance(3);
    control->GetControlInfo(null ? nullptr : &info);
    control->OnMnemonic(null ? nullptr : &key);
    control->OnAmbientPropertyChange(random_.number());
    control->FreezeEvents(random_.chance(2));
    const auto quick = document.as<IQuickActivate>();
    SIZEL size{random_.number(), random_.number()};
    quick->SetContentExtent(null ? nullptr : &size);
    quick->GetContentExtent(null ? nullptr : &size);
    QACONTAINER container{};
    container.cbSize = sizeof container;
    container.pClientSite = random_.chance(2) ? nullptr : document.host.site.client_site();
    QACONTROL answer{};
    answer.cbSize = sizeof answer;
    quick->QuickActivate(null ? nullptr : &container, random_.chance(4) ? nullptr : &answer);
}

void random_documents::call_persistence(hosted_document& document)
{
    const bool null = random_.chance(3);
    CLSID id{};
    ULARGE_INTEGER size{};
    LPOLESTR path = nullptr;
    const auto stream = document.as<IPersistStreamInit>();
    stream->GetClassID(null ? nullptr : &id);
    stream->IsDirty();
    stream->Load(nullptr);
    stream->Save(nullptr, TRUE);
    stream->GetSizeMax(null ? nullptr : &size);
    stream->InitNew();
    const auto file = document.as<IPersistFile>();
    file->Save(nullptr, FALSE);
    file->SaveCompleted(null ? nullptr : L"x");
    file->GetCurFile(null ? nullptr : &path);
    const auto moniker = document.as<IPersistMoniker>();
    moniker->Save(nullptr, nullptr, FALSE);
    moniker->SaveCompleted(nullptr, nullptr);
    moniker->GetCurMoniker(nullptr);
    const auto storage = document.as<IPersistStorage>();
    storage->InitNew(nullptr);
    storage->Load(nullptr);
    storage->Save(nullptr, random_.chance(2));
    storage->SaveCompleted(nullptr);
    storage->HandsOffStorage();
}

void random_documents::call_data(hosted_document& document)
{
    const auto data = document.as<IDataObject>();
    FORMATETC format{};
    format.cfFormat = random_.one_of<CLIPFORMAT>({CF_METAFILEPICT, CF_TEXT, CF_ENHMETAFILE, 0xC123});
    format.dwAspect = static_cast<DWORD>(random_.one_of<LONG>({1, 1, 2, random_.number()}));
    format.lindex = random_.number();
    format.tymed = random_.one_of<DWORD>({TYMED_MFPICT, TYMED_HGLOBAL, TYMED_NULL, 0xffffffff});
    const bool null = random_.chance(4);
    STGMEDIUM medium{};
    FORMATETC canonical{};
    ComPtr<IEnumFORMATETC> formats;
    ComPtr<IEnumSTATDATA> connections;
    DWORD cookie = 0;
    if (!null && SUCCEEDED(data->GetData(&format, &medium)))
        ReleaseStgMedium(&medium);
    data->GetData(&format, nullptr);
    data->GetDataHere(&format, null ? nullptr : &medium);
    data->QueryGetData(null ? nullptr : &format);
    data->GetCanonicalFormatEtc(null ? nullptr : &format, null ? nullptr : &canonical);
    data->SetData(null ? nullptr : &format, nullptr, FALSE);
    data->EnumFormatEtc(DATADIR_GET, null ? nullptr : formats.GetAddressOf());
    data->DAdvise(null ? nullptr : &format, 0, nullptr, null ? nullptr : &cookie);
    data->DUnadvise(random_.chance(2) ? cookie : 77);
    data->EnumDAdvise(null ? nullptr : connections.GetAddressOf());
}

void random_documents::call_dispatch(hosted_document& document)
{
    const auto object = document.as<IDispatch>();
    const bool null = random_.chance(3);
    UINT count = 0;
    UINT bad = 0;
    ComPtr<ITypeInfo> info;
    object->GetTypeInfoCount(null ? nullptr : &count);
    object->GetTypeInfo(static_cast<UINT>(random_.number()), LOCALE_USER_DEFAULT,
                        null ? nullptr : info.GetAddressOf());
    wchar_t name[] = L"name";
    LPOLESTR names[] = {name};
    DISPID id = 0;
    object->GetIDsOfNames(random_.chance(4) ? IID_IUnknown : IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
    DISPPARAMS parameters{};
    VARIANT arguments[2] = {};
    parameters.rgvarg = arguments;
    parameters.cArgs = static_cast<UINT>(random_.below(3));
    VARIANT result{};
    EXCEPINFO exception{};
    object->Invoke(random_.number(), random_.chance(4) ? IID_IUnknown : IID_NULL, LOCALE_USER_DEFAULT,
                   static_cast<WORD>(random_.number()), &parameters, null ? nullptr : &result,
                   null ? nullptr : &exception, null ? nullptr : &bad);
    VariantClear(&result);
}

void random_documents::query(hosted_document& document)
{
    const IID id =
        random_.one_of<IID>({IID_IUnknown, IID_IDispatch, IID_IOleLink, IID_IOleObject, IID_IPersist,
                             IID_IViewObject2, IID_IOleWindow, IID_IMarshal, GUID{}});
    void* found = nullptr;
    document.document->QueryInterface(id, &found);
    if (found)
        static_cast<IUnknown*>(found)->Release();
    EXPECT_EQ(document.document->QueryInterface(id, nullptr), E_POINTER);
}

} // namespace quill::soak
