// Whether this user, or a tab of low integrity, can write to a folder.
#pragma once

#include "diagnose/machine.h"

#include <string>

namespace quill::diagnose {

// Creates a folder of a new name in `folder`, a file in that, and deletes both. At low integrity this is done
// by this thread with a copy of its token whose integrity is lowered.
write_facts test_writing(const std::wstring& folder, bool at_low_integrity);

} // namespace quill::diagnose
