#include "acceptance/msiexec_result.h"

namespace quill::acceptance {

msi_outcome outcome_of_msiexec(unsigned long exit_code)
{
    switch (exit_code) {
    case 0:
        return msi_outcome::done;
    case 1641: // ERROR_SUCCESS_REBOOT_INITIATED
    case 3010: // ERROR_SUCCESS_REBOOT_REQUIRED
        return msi_outcome::done_restart_pending;
    case 1603: // ERROR_INSTALL_FAILURE
    case 1627: // ERROR_FUNCTION_FAILED, which Wine returns for a failed action
        return msi_outcome::action_failed;
    case 1618: // ERROR_INSTALL_ALREADY_RUNNING
        return msi_outcome::busy;
    default:
        return msi_outcome::other;
    }
}

std::string_view remark_on(msi_outcome outcome)
{
    switch (outcome) {
    case msi_outcome::done_restart_pending:
        return ", a restart is pending";
    case msi_outcome::busy:
        return ", another installation is in progress";
    default:
        return "";
    }
}

} // namespace quill::acceptance
