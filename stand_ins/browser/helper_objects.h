// Loads the registered browser helper objects of a tab.
#pragma once

#include <windows.h>

#include <atlbase.h>
#include <ocidl.h>

#include <vector>

namespace quill {

// The classes that are registered as helper objects, per machine.
std::vector<CLSID> registered_helper_objects();

// The helper objects of one tab.
class helper_objects
{
public:
    helper_objects() = default;
    helper_objects(const helper_objects&) = delete;
    helper_objects& operator=(const helper_objects&) = delete;
    ~helper_objects() { unload(); }

    // Creates every registered object and sets the tab as its site. Skips an object that cannot be created or
    // whose SetSite fails. Returns the number of loaded objects.
    std::size_t load(IUnknown* tab);
    // Clears the site of every object and releases it.
    void unload();

private:
    std::vector<CComPtr<IObjectWithSite>> objects_;
};

} // namespace quill
