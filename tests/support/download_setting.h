// The user's download switch in the real registry, for tests of the module as a whole.
#pragma once

#include "tests/support/scopes.h"

namespace quill::test {

// Absent at the beginning and at the end of the scope, which is the default path: urlmon.
class download_setting
{
public:
    void use_wininet() const { key_.set_string(L"kIEBrowserPluginWinINet", L"/b 1"); }
    void use_urlmon() const { key_.set_string(L"kIEBrowserPluginWinINet", L"/b 0"); }

private:
    registry_key_scope key_{HKEY_CURRENT_USER,
                            L"SOFTWARE\\Quill\\DocStudio\\14\\Settings\\Preferences\\kBrowserPlugin"};
};

} // namespace quill::test
