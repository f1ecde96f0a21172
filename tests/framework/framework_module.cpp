#include "tests/framework/framework_module.h"

namespace quill::test {
namespace {

framework_module module_object;

inline constexpr CATID CATID_one = {
    0x3C0B7A11, 0x52D4, 0x4E6F, {0x9A, 0x10, 0x6D, 0x2B, 0x88, 0x41, 0x7E, 0x11}};
inline constexpr CATID CATID_two = {
    0x3C0B7A11, 0x52D4, 0x4E6F, {0x9A, 0x10, 0x6D, 0x2B, 0x88, 0x41, 0x7E, 0x12}};

class first : public CComObjectRootEx<CComSingleThreadModel>,
              public CComCoClass<first, &CLSID_first>,
              public IObjectWithSiteImpl<first>
{
public:
    DECLARE_NOT_AGGREGATABLE(first)
    BEGIN_COM_MAP(first)
    COM_INTERFACE_ENTRY(IObjectWithSite)
    END_COM_MAP()
    BEGIN_CATEGORY_MAP(first)
    IMPLEMENTED_CATEGORY(CATID_one)
    IMPLEMENTED_CATEGORY(CATID_two)
    REQUIRED_CATEGORY(CATID_one)
    END_CATEGORY_MAP()
    static HRESULT WINAPI UpdateRegistry(BOOL bRegister) noexcept
    {
        return map_step(bRegister ? "register first" : "unregister first");
    }
    static void WINAPI ObjectMain(bool bStarting) noexcept
    {
        map_step(bStarting ? "start first" : "end first");
    }
};

class second : public first
{
public:
    DECLARE_NOT_AGGREGATABLE(second)
    static HRESULT WINAPI UpdateRegistry(BOOL bRegister) noexcept
    {
        return map_step(bRegister ? "register second" : "unregister second");
    }
    static void WINAPI ObjectMain(bool bStarting) noexcept
    {
        map_step(bStarting ? "start second" : "end second");
    }
    static const ATL::_ATL_CATMAP_ENTRY* GetCategoryMap() noexcept { return nullptr; }
};

OBJECT_ENTRY_AUTO(CLSID_first, first)
OBJECT_ENTRY_AUTO(CLSID_second, second)

// A class that only the module itself creates, and an empty entry.
ATL::_ATL_OBJMAP_CACHE hidden_cache;
const ATL::_ATL_OBJMAP_ENTRY_EX hidden_entry = {&CLSID_hidden, &second::UpdateRegistry, nullptr, nullptr,
                                                &hidden_cache, &second::GetCategoryMap, nullptr};
__attribute__((section("ATL$__m"), used)) const ATL::_ATL_OBJMAP_ENTRY_EX* const empty_pointer = nullptr;
__attribute__((section("ATL$__m"), used)) const ATL::_ATL_OBJMAP_ENTRY_EX* const hidden_pointer =
    &hidden_entry;

} // namespace

std::vector<std::string>& map_events()
{
    static std::vector<std::string> events;
    return events;
}

std::string& failing_step()
{
    static std::string step;
    return step;
}

HRESULT map_step(const std::string& step)
{
    map_events().push_back(step);
    return step == failing_step() ? E_ABORT : S_OK;
}

framework_module& the_module()
{
    return module_object;
}

} // namespace quill::test
