#include "tests/soak/soak_settings.h"

#include <array>
#include <cstdio>
#include <cwchar>

namespace quill::soak {

std::uint64_t number_setting(const wchar_t* name, std::uint64_t otherwise)
{
    std::array<wchar_t, 32> text{};
    const DWORD length = GetEnvironmentVariableW(name, text.data(), static_cast<DWORD>(text.size()));
    if (length == 0 || length >= text.size())
        return otherwise;
    wchar_t* end = nullptr;
    const std::uint64_t number = std::wcstoull(text.data(), &end, 10);
    return end == text.data() ? otherwise : number;
}

std::uint64_t announced_seed(const char* run)
{
    constexpr std::uint64_t usual_seed = 20;
    const std::uint64_t seed = number_setting(L"QUILL_SOAK_SEED", usual_seed);
    std::printf("%s: seed %llu\n", run, static_cast<unsigned long long>(seed));
    std::fflush(stdout);
    return seed;
}

void trace_step(std::uint64_t number, const char* what)
{
    static const bool is_on = number_setting(L"QUILL_SOAK_TRACE", 0) != 0;
    if (!is_on)
        return;
    std::printf("%llu %s\n", static_cast<unsigned long long>(number), what);
    std::fflush(stdout);
}

} // namespace quill::soak
