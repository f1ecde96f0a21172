// What an exit code of msiexec says about an action.
#pragma once

#include <string_view>

namespace quill::acceptance {

enum class msi_outcome
{
    done,
    done_restart_pending, // what is left goes with the next restart
    action_failed,        // the installation was started, and undone
    busy,                 // another installation is in progress: try again
    other
};

msi_outcome outcome_of_msiexec(unsigned long exit_code);

inline bool is_done(msi_outcome outcome)
{
    return outcome == msi_outcome::done || outcome == msi_outcome::done_restart_pending;
}

// Behind the exit code in the report; empty if there is nothing to add.
std::string_view remark_on(msi_outcome outcome);

} // namespace quill::acceptance
