#include "tests/support/viewer/viewer_script.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <oleauto.h>

#include <algorithm>

namespace quill::test {
namespace {

struct method_signature
{
    DISPID id;
    std::vector<VARTYPE> arguments; // in call order
    bool has_result;
};

const std::vector<method_signature>& signatures()
{
    static const std::vector<method_signature> all = {
        {viewer_open, {VT_BSTR}, true},
        {viewer_go_to_page, {VT_I4}, false},
        {viewer_set_zoom, {VT_R8}, false},
        {viewer_print, {}, false},
        {viewer_first_setup, {}, false},
        {viewer_second_setup, {}, false},
        {viewer_get_window, {}, true},
        {viewer_notify_links, {VT_UI8, VT_UI4}, false},
        {viewer_notify_save_as, {VT_UI8, VT_UI4}, false},
    };
    return all;
}

const method_signature* signature_of(DISPID id)
{
    const auto found = std::find_if(signatures().begin(), signatures().end(),
                                    [id](const method_signature& method) { return method.id == id; });
    return found == signatures().end() ? nullptr : &*found;
}

std::string call_name(DISPID id)
{
    return "viewer::" + std::to_string(id);
}

} // namespace

viewer_script::viewer_script(call_log& calls) : calls(calls)
{
    for (const auto& method : signatures())
        calls.allow(call_name(method.id));
    calls.allow("viewer class::CreateInstance");
}

viewer_script::~viewer_script()
{
    for (auto& planned : answers_)
        VariantClear(&planned.second.value);
}

void viewer_script::answer(DISPID method, HRESULT result, const VARIANT& value)
{
    planned_answer& planned = answers_[method];
    planned.result = result;
    VariantClear(&planned.value);
    VARIANT source = value; // the source of VariantCopy is not const
    VariantCopy(&planned.value, &source);
}

void viewer_script::answer_bool(DISPID method, VARIANT_BOOL value)
{
    VARIANT answer_value{};
    answer_value.vt = VT_BOOL;
    answer_value.boolVal = value;
    answer(method, S_OK, answer_value);
}

void viewer_script::answer_i4(DISPID method, long value)
{
    VARIANT answer_value{};
    answer_value.vt = VT_I4;
    answer_value.lVal = value;
    answer(method, S_OK, answer_value);
}

std::vector<std::string> viewer_script::texts(DISPID method) const
{
    std::vector<std::string> chosen;
    for (const auto& call : received) {
        if (method == 0 || call.id == method)
            chosen.push_back(to_text(call));
    }
    return chosen;
}

HRESULT viewer_script::invoke(DISPID id, REFIID iid, LCID locale, WORD flags, const DISPPARAMS* parameters,
                              VARIANT* result)
{
    EXPECT_TRUE(IsEqualIID(iid, IID_NULL));
    EXPECT_EQ(locale, LCID{0x0800}) << "LOCALE_SYSTEM_DEFAULT";
    EXPECT_EQ(flags, DISPATCH_METHOD);
    recorded_call call;
    call.id = id;
    if (parameters) {
        EXPECT_EQ(parameters->cNamedArgs, 0u);
        for (UINT index = parameters->cArgs; index-- > 0;)
            call.arguments.push_back(record(parameters->rgvarg[index]));
    } else {
        ADD_FAILURE() << "Invoke without parameters";
    }
    const method_signature* const method = signature_of(id);
    EXPECT_NE(method, nullptr) << "method " << id << " is not the viewer's";
    if (method) {
        std::vector<VARTYPE> types;
        for (const auto& argument : call.arguments)
            types.push_back(argument.type);
        EXPECT_EQ(types, method->arguments) << "arguments of method " << id;
        EXPECT_TRUE(!method->has_result || result)
            << "method " << id << " called without a place for its result";
    }
    if (result)
        EXPECT_EQ(result->vt, VT_EMPTY) << "the result variable was not initialised";
    received.push_back(std::move(call));

    const call_fault fault = calls.arrive(call_name(id));
    if (is_error(fault)) {
        if (result && failure_leaves) {
            result->vt = VT_UNKNOWN;
            result->punkVal = failure_leaves;
        }
        return DISP_E_EXCEPTION;
    }
    if (fault != call_fault::none)
        return S_OK;
    const auto planned = answers_.find(id);
    if (planned == answers_.end())
        return usual_answer(id, result);
    if (result)
        VariantCopy(result, &planned->second.value);
    return planned->second.result;
}

HRESULT viewer_script::usual_answer(DISPID id, VARIANT* result) const
{
    if (!result)
        return S_OK;
    if (id == viewer_open) {
        result->vt = VT_BOOL;
        result->boolVal = VARIANT_TRUE;
    } else if (id == viewer_get_window) {
        result->vt = VT_UI8;
        result->ullVal = reinterpret_cast<ULONG_PTR>(window);
    }
    return S_OK;
}

} // namespace quill::test
