// Browser helper objects: what add-ons register to be loaded into every tab.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <ocidl.h>

#include <vector>

namespace quill {

// Classes that are registered with the browser, per machine.
std::vector<CLSID> registered_helper_objects();

// The helper objects of one tab.
class helper_objects
{
public:
    helper_objects() = default;
    helper_objects(const helper_objects&) = delete;
    helper_objects& operator=(const helper_objects&) = delete;
    ~helper_objects() { unload(); }

    // Makes every registered one and gives it the tab as its site; how many there are. One that cannot be
    // made, or that refuses its site, is left out.
    std::size_t load(IUnknown* tab);
    // Takes the site from all of them and lets go.
    void unload();

private:
    std::vector<CComPtr<IObjectWithSite>> objects_;
};

} // namespace quill
