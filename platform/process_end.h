// Tells unloading the module and process exit apart, for static destructors, which do not get DllMain's
// argument.
#pragma once

namespace quill {

// True during process exit, when nothing must be freed: the other threads were terminated and may own locks,
// other libraries may be uninitialised already, and the system reclaims all resources. False while the module
// is unloaded by FreeLibrary.
bool process_is_ending() noexcept;

} // namespace quill
