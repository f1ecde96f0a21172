// The DLL's file: exports, imports, protections, resources, type library.
#include "tests/module/loaded_module.h"
#include "tests/support/scopes.h"

#include <gmock/gmock.h>
#include <oleauto.h>
#include <quill_version.h>
#include <winver.h>

#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace quill::test {
namespace {

struct Image : testing::Test
{
    template <class T>
    const T* at(DWORD offset) const
    {
        return reinterpret_cast<const T*>(reinterpret_cast<const BYTE*>(module.handle()) + offset);
    }
    const IMAGE_OPTIONAL_HEADER64& header() const
    {
        return at<IMAGE_NT_HEADERS64>(static_cast<DWORD>(at<IMAGE_DOS_HEADER>(0)->e_lfanew))->OptionalHeader;
    }
    std::string version_text(const wchar_t* name) const;
    std::set<std::string> imported_functions() const;

    loaded_module module;
};

TEST_F(Image, ExportsFiveFunctionsByName)
{
    const auto* const exports =
        at<IMAGE_EXPORT_DIRECTORY>(header().DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress);
    EXPECT_EQ(exports->NumberOfFunctions, 5u);
    std::vector<std::string> names;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i)
        names.emplace_back(at<char>(at<DWORD>(exports->AddressOfNames)[i]));
    EXPECT_THAT(names, testing::UnorderedElementsAre("DllCanUnloadNow", "DllGetClassObject", "DllInstall",
                                                     "DllRegisterServer", "DllUnregisterServer"));
}

TEST_F(Image, ImportsSystemLibrariesOnly)
{
    char system[MAX_PATH] = {};
    GetSystemDirectoryA(system, MAX_PATH);
    const auto* import =
        at<IMAGE_IMPORT_DESCRIPTOR>(header().DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
    ASSERT_NE(import->Name, 0u);
    for (; import->Name; ++import) {
        const std::string path = std::string(system) + "\\" + at<char>(import->Name);
        EXPECT_NE(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES) << path;
    }
}

std::set<std::string> Image::imported_functions() const
{
    std::set<std::string> names;
    const auto* library =
        at<IMAGE_IMPORT_DESCRIPTOR>(header().DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
    for (; library->Name; ++library)
        for (const auto* entry = at<IMAGE_THUNK_DATA64>(library->OriginalFirstThunk); entry->u1.AddressOfData;
             ++entry)
            if (!IMAGE_SNAP_BY_ORDINAL64(entry->u1.Ordinal))
                names.insert(at<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(entry->u1.AddressOfData))->Name);
    return names;
}

// A vectored handler of the module would get every exception before the browser's handlers.
TEST_F(Image, InstallsNoExceptionHandlerForTheProcess)
{
    const auto functions = imported_functions();
    EXPECT_TRUE(functions.contains("RaiseException")) << "the imports cannot be read";
    for (const char* function :
         {"AddVectoredExceptionHandler", "RemoveVectoredExceptionHandler", "RtlAddVectoredExceptionHandler",
          "AddVectoredContinueHandler", "SetUnhandledExceptionFilter"})
        EXPECT_FALSE(functions.contains(function)) << function;
}

// Without their names the module cannot look the functions up with GetProcAddress either.
TEST_F(Image, ContainsNoNameOfAFunctionForHandlersOrStorageIndexes)
{
    const std::wstring path = loaded_module::path();
    std::ifstream file(std::string(path.begin(), path.end()), std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    ASSERT_NE(bytes.find("RaiseException"), std::string::npos) << "the file cannot be read";
    for (const std::string name : {"AddVectoredExceptionHandler", "AddVectoredContinueHandler",
                                   "SetUnhandledExceptionFilter", "TlsAlloc", "FlsAlloc"}) {
        std::string utf16;
        for (const char c : name)
            utf16 += {c, '\0'};
        EXPECT_EQ(bytes.find(name), std::string::npos) << name;
        EXPECT_EQ(bytes.find(utf16), std::string::npos) << name;
    }
}

// An index that the module allocated would leak when it is unloaded.
TEST_F(Image, AllocatesNoStorageIndexes)
{
    const auto functions = imported_functions();
    EXPECT_FALSE(functions.contains("TlsAlloc"));
    EXPECT_FALSE(functions.contains("FlsAlloc"));
}

TEST_F(Image, ProtectionsAreOn)
{
    constexpr WORD wanted = IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE | IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA |
                            IMAGE_DLLCHARACTERISTICS_NX_COMPAT;
    EXPECT_EQ(header().DllCharacteristics & wanted, wanted);
}

TEST_F(Image, DebugInformationIsInASeparateFile)
{
    const std::wstring path = loaded_module::folder() + L"QuillPDF.IE.pdb";
    EXPECT_NE(GetFileAttributesW(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

std::string Image::version_text(const wchar_t* name) const
{
    DWORD ignored = 0;
    const std::wstring path = loaded_module::path();
    std::vector<BYTE> block(GetFileVersionInfoSizeW(path.c_str(), &ignored));
    if (block.empty() ||
        !GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()))
        return "no version information";
    wchar_t* text = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(block.data(), (std::wstring(L"\\StringFileInfo\\040904B0\\") + name).c_str(),
                        reinterpret_cast<void**>(&text), &length))
        return "no such text";
    return std::string(text, text + wcslen(text));
}

TEST_F(Image, VersionResourceNamesTheProduct)
{
    EXPECT_EQ(version_text(L"FileVersion"), QUILL_VERSION_TEXT);
    EXPECT_EQ(version_text(L"ProductVersion"), QUILL_VERSION_TEXT);
    EXPECT_EQ(version_text(L"ProductName"), "Quill PDF");
    EXPECT_EQ(version_text(L"OriginalFilename"), "QuillPDF.IE.dll");
}

TEST_F(Image, VersionNumberIsTheProducts)
{
    DWORD ignored = 0;
    const std::wstring path = loaded_module::path();
    std::vector<BYTE> block(GetFileVersionInfoSizeW(path.c_str(), &ignored));
    ASSERT_TRUE(GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(block.size()), block.data()));
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), L"\\", reinterpret_cast<void**>(&fixed), &size));
    const WORD numbers[] = {QUILL_VERSION_NUMBERS};
    const DWORD high = static_cast<DWORD>(MAKELONG(numbers[1], numbers[0]));
    const DWORD low = static_cast<DWORD>(MAKELONG(numbers[3], numbers[2]));
    EXPECT_EQ(fixed->dwFileVersionMS, high);
    EXPECT_EQ(fixed->dwFileVersionLS, low);
    EXPECT_EQ(fixed->dwProductVersionMS, high);
    EXPECT_EQ(fixed->dwProductVersionLS, low);
    EXPECT_EQ(fixed->dwFileType, static_cast<DWORD>(VFT_DLL));
}

TEST_F(Image, CarriesScriptsAndText)
{
    EXPECT_NE(FindResourceW(module.handle(), MAKEINTRESOURCEW(100), L"REGISTRY"), nullptr);
    EXPECT_NE(FindResourceW(module.handle(), MAKEINTRESOURCEW(102), L"REGISTRY"), nullptr);
    EXPECT_NE(FindResourceW(module.handle(), MAKEINTRESOURCEW(1), L"TYPELIB"), nullptr);
    wchar_t text[64] = {};
    EXPECT_GT(LoadStringW(module.handle(), 101, text, ARRAYSIZE(text)), 0);
    EXPECT_STREQ(text, L"Downloading... %d%%");
    // The DLL has no menu resource.
    EXPECT_EQ(FindResourceW(module.handle(), MAKEINTRESOURCEW(206), MAKEINTRESOURCEW(4)), nullptr);
}

// Describes elements of the type library by kind, name and help string.
struct TypeLibrary : Image
{
    TypeLibrary() { EXPECT_EQ(LoadTypeLibEx(loaded_module::path().c_str(), REGKIND_NONE, &library), S_OK); }
    ~TypeLibrary() override { library->Release(); }

    std::wstring describe(REFGUID guid)
    {
        ITypeInfo* info = nullptr;
        if (FAILED(library->GetTypeInfoOfGuid(guid, &info)))
            return L"missing";
        BSTR name = nullptr;
        BSTR help = nullptr;
        info->GetDocumentation(MEMBERID_NIL, &name, &help, nullptr, nullptr);
        TYPEATTR* attributes = nullptr;
        info->GetTypeAttr(&attributes);
        const std::wstring kind =
            attributes->typekind == TKIND_COCLASS ? L"coclass "
            : attributes->typekind == TKIND_DISPATCH && (attributes->wTypeFlags & TYPEFLAG_FDUAL) ? L"dual "
            : attributes->typekind == TKIND_INTERFACE ? L"interface "
                                                      : L"other ";
        info->ReleaseTypeAttr(attributes);
        info->Release();
        const std::wstring text = kind + (name ? name : L"") + L"|" + (help ? help : L"");
        SysFreeString(name);
        SysFreeString(help);
        return text;
    }
    // The interface that a coclass implements.
    std::wstring implemented(REFGUID coclass)
    {
        ITypeInfo* info = nullptr;
        ITypeInfo* found = nullptr;
        HREFTYPE reference = 0;
        if (FAILED(library->GetTypeInfoOfGuid(coclass, &info)))
            return L"missing";
        std::wstring text = L"none";
        if (SUCCEEDED(info->GetRefTypeOfImplType(0, &reference)) &&
            SUCCEEDED(info->GetRefTypeInfo(reference, &found))) {
            BSTR name = nullptr;
            found->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr);
            text = name ? name : L"";
            SysFreeString(name);
            found->Release();
        }
        info->Release();
        return text;
    }

    ITypeLib* library = nullptr;
};

TEST_F(TypeLibrary, DescribesItself)
{
    TLIBATTR* attributes = nullptr;
    ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
    EXPECT_EQ(attributes->guid, library_id);
    library->ReleaseTLibAttr(attributes);
    BSTR name = nullptr;
    BSTR help = nullptr;
    ASSERT_EQ(library->GetDocumentation(-1, &name, &help, nullptr, nullptr), S_OK);
    EXPECT_EQ(std::wstring(name), L"QuillPDF_IE_ActiveDocLib");
    EXPECT_EQ(std::wstring(help), L"QuillPDF.IE.ActiveDoc 14.0 Type Library");
    SysFreeString(name);
    SysFreeString(help);
}

TEST_F(TypeLibrary, DescribesClassesAndInterfaces)
{
    EXPECT_EQ(describe(document_interface), L"dual IQuillPDF_IE_ActiveDoc|QuillPDF.IE.ActiveDoc Interface");
    EXPECT_EQ(describe(active_doc_class), L"coclass ActiveDocCtrl|QuillPDF.IE.ActiveDoc Class");
    EXPECT_EQ(describe(helper_class), L"coclass SharepointBrowserHelperObject|QuillPDF.IE.Sharepoint Class");
    EXPECT_EQ(implemented(active_doc_class), L"IQuillPDF_IE_ActiveDoc");
    EXPECT_EQ(implemented(helper_class), L"IObjectWithSite");
}

TEST_F(TypeLibrary, DescribesTheSiteInterfaceWithItsMethods)
{
    static constexpr IID site_interface = {
        0xFC4801A3, 0x2BA9, 0x11CF, {0xA2, 0x29, 0x00, 0xAA, 0x00, 0x3D, 0x73, 0x52}};
    EXPECT_EQ(describe(site_interface), L"interface IObjectWithSite|");
    ITypeInfo* info = nullptr;
    ASSERT_EQ(library->GetTypeInfoOfGuid(site_interface, &info), S_OK);
    std::vector<std::wstring> methods;
    for (UINT i = 0; i < 2; ++i) {
        FUNCDESC* function = nullptr;
        ASSERT_EQ(info->GetFuncDesc(i, &function), S_OK);
        BSTR names[4] = {};
        UINT count = 0;
        EXPECT_EQ(info->GetNames(function->memid, names, ARRAYSIZE(names), &count), S_OK);
        info->ReleaseFuncDesc(function);
        std::wstring text;
        for (UINT n = 0; n < count; ++n) {
            text += (n ? L" " : L"") + std::wstring(names[n]);
            SysFreeString(names[n]);
        }
        methods.push_back(text);
    }
    info->Release();
    EXPECT_THAT(methods, testing::ElementsAre(L"SetSite pUnkSite", L"GetSite riid ppvSite"));
}

} // namespace
} // namespace quill::test
