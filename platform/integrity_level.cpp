#include "platform/integrity_level.h"

#include "platform/unique_handle.h"

namespace quill {
namespace {

// The last sub-authority of the label's SID; 0, the lowest level, if any call fails.
DWORD integrity_level(HANDLE process)
{
    unique_handle token;
    if (!OpenProcessToken(process, TOKEN_QUERY, token.put()))
        return 0;
    DWORD size = 0;
    if (!GetTokenInformation(token.get(), TokenIntegrityLevel, nullptr, 0, &size) &&
        GetLastError() != ERROR_INSUFFICIENT_BUFFER)
        return 0;
    const unique_local_memory<void*> memory(LocalAlloc(LPTR, size));
    if (!memory || !GetTokenInformation(token.get(), TokenIntegrityLevel, memory.get(), size, &size))
        return 0;

    const auto* label = static_cast<const TOKEN_MANDATORY_LABEL*>(memory.get());
    const UCHAR parts = *GetSidSubAuthorityCount(label->Label.Sid);
    return parts == 0 ? 0 : *GetSidSubAuthority(label->Label.Sid, DWORD{parts} - 1);
}

} // namespace

bool is_low_integrity_process(HANDLE process)
{
    return is_low_integrity_level(integrity_level(process));
}

} // namespace quill
