// One automation call as the viewer received it.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <string>
#include <vector>

namespace quill::test {

struct recorded_argument
{
    VARTYPE type = VT_EMPTY;
    unsigned long long integer = 0; // VT_I4, VT_UI4, VT_UI8
    double real = 0;                // VT_R8
    std::wstring text;              // VT_BSTR
};

struct recorded_call
{
    DISPID id = 0;
    std::vector<recorded_argument> arguments; // in call order: the reverse of the order in rgvarg
};

recorded_argument record(const VARIANT& value);

// "9(R8 0.5)", "1(BSTR C:\x.pdf)", "23(UI8 65664, UI4 34562)"
std::string to_text(const recorded_call& call);

} // namespace quill::test
