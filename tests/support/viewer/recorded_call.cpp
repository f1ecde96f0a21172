#include "tests/support/viewer/recorded_call.h"

#include "tests/support/text.h"

#include <sstream>

namespace quill::test {
namespace {

void write(std::ostream& out, const recorded_argument& argument)
{
    switch (argument.type) {
    case VT_I4:
        out << "I4 " << static_cast<long long>(argument.integer);
        break;
    case VT_UI4:
        out << "UI4 " << argument.integer;
        break;
    case VT_UI8:
        out << "UI8 " << argument.integer;
        break;
    case VT_R8:
        out << "R8 " << argument.real;
        break;
    case VT_BSTR:
        out << "BSTR " << to_utf8(argument.text);
        break;
    default:
        out << "VT " << argument.type;
    }
}

} // namespace

recorded_argument record(const VARIANT& value)
{
    recorded_argument argument;
    argument.type = value.vt;
    switch (value.vt) {
    case VT_I4:
        argument.integer = static_cast<unsigned long long>(static_cast<long long>(value.lVal));
        break;
    case VT_UI4:
        argument.integer = value.ulVal;
        break;
    case VT_UI8:
        argument.integer = value.ullVal;
        break;
    case VT_R8:
        argument.real = value.dblVal;
        break;
    case VT_BSTR:
        if (value.bstrVal)
            argument.text.assign(value.bstrVal, SysStringLen(value.bstrVal));
        break;
    default:
        break;
    }
    return argument;
}

std::string to_text(const recorded_call& call)
{
    std::ostringstream out;
    out << call.id << "(";
    const char* separator = "";
    for (const auto& argument : call.arguments) {
        out << separator;
        write(out, argument);
        separator = ", ";
    }
    out << ")";
    return out.str();
}

} // namespace quill::test
