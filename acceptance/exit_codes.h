// Exit codes of QuillAcceptance.exe. accept.cmd uses the same numbers for what it checks itself.
#pragma once

namespace quill::acceptance {

enum exit_code : int
{
    exit_passed = 0,
    exit_failed = 1,
    exit_usage = 2,
    exit_broken_off = 3,
    exit_not_64_bit = 10,
    exit_no_rights = 11,
    exit_no_engine = 12,
    exit_installed = 13,
    exit_registered = 14,
    exit_damaged_kit = 15,
    exit_no_report = 16,
    exit_already_running = 17,
    exit_not_restored = 18,
    exit_unreadable = 19,
};

} // namespace quill::acceptance
