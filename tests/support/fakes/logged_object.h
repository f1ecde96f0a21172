// Base of the fakes with a call log, and the results of their methods for each fault.
#pragma once

#include "tests/support/fakes/call_log.h"
#include "tests/support/fakes/com_object.h"

#include <objbase.h>

#include <string>
#include <utility>

namespace quill::test {

// A member of the host of its test. QueryInterface is counted in the log and can be made to fail.
template <class... Bases>
class logged_object : public test_object<Bases...>
{
public:
    logged_object(call_log& calls, std::string name) : test_object<Bases...>(std::move(name)), calls_(calls)
    {
    }

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override
    {
        SCOPED_TRACE(this->name());
        if (!out || !queries_can_fail() || !this->lookup(iid))
            return test_object<Bases...>::QueryInterface(iid, out);
        *out = nullptr;
        const call_fault fault = calls_.arrive_query(this->name() + "::QueryInterface");
        if (fault == call_fault::none)
            return test_object<Bases...>::QueryInterface(iid, out);
        return is_error(fault) ? E_NOINTERFACE : S_OK;
    }

protected:
    // False for an object that COM itself queries: COM does not check the result of a successful query for
    // nullptr.
    virtual bool queries_can_fail() const { return true; }

    call_log& calls() const { return calls_; }
    call_fault arrive(const std::string& method, const std::string& arguments = {}) const
    {
        return calls_.arrive(method, arguments);
    }

private:
    call_log& calls_;
};

// Checks an out parameter and sets it as the fault requires. True if the caller has to fill it; otherwise
// `result` is the result of the method.
template <class Pointer>
bool wants_value(call_fault fault, Pointer* out, HRESULT& result)
{
    if (!out) {
        ADD_FAILURE() << "called without an out parameter";
        result = E_POINTER;
        return false;
    }
    EXPECT_EQ(*out, nullptr) << "the out parameter was not initialised";
    if (fault == call_fault::error || fault == call_fault::null_result)
        *out = nullptr;
    result = fault == call_fault::error ? E_FAIL : is_error(fault) ? E_NOTIMPL : S_OK;
    return fault == call_fault::none;
}

// Result of a method with an interface out parameter; `value` is returned without a fault.
template <class Interface>
HRESULT answer_interface(call_fault fault, Interface** out, Interface* value)
{
    HRESULT result = S_OK;
    if (!wants_value(fault, out, result)) {
        if (fault == call_fault::error_with_value && out)
            *out = value;
        return result;
    }
    *out = value;
    if (!value)
        return E_NOTIMPL;
    value->AddRef();
    return S_OK;
}

// Result of a method without an out parameter.
inline HRESULT answer_plain(call_fault fault, HRESULT usual = S_OK)
{
    return fault == call_fault::error ? E_FAIL : is_error(fault) ? E_NOTIMPL : usual;
}

} // namespace quill::test
