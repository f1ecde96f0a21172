// Which system the tests run on: they also run on Windows, in the acceptance kit.
#pragma once

namespace quill::test {

// For what a test must do differently in Wine. What it expects of the module is the same on both.
bool is_wine();

} // namespace quill::test
