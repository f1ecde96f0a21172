// Suppresses the output of the whole process.
#pragma once

#include <fcntl.h>
#include <io.h>

#include <cstdio>

namespace quill::test {

class silent_output
{
public:
    silent_output() : before_(_dup(1))
    {
        std::fflush(stdout);
        const int nothing = _open("NUL", _O_WRONLY);
        _dup2(nothing, 1);
        _close(nothing);
    }
    ~silent_output()
    {
        std::fflush(stdout);
        _dup2(before_, 1);
        _close(before_);
    }
    silent_output(const silent_output&) = delete;
    silent_output& operator=(const silent_output&) = delete;

private:
    int before_;
};

} // namespace quill::test
