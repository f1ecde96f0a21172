// A control in a strict container; checks at the end that both are released.
#pragma once

#include "tests/framework/strict_container.h"
#include "tests/framework/test_control.h"
#include "tests/support/process_resources.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace quill::test {

using calls = std::vector<std::string>;

class control_fixture : public testing::Test
{
protected:
    using control_object = ATL::CComObject<test_control>;

    void SetUp() override
    {
        ASSERT_EQ(OleInitialize(nullptr), S_OK);
        process_resources::now(); // before the warm-up: its first call makes windows
        {
            // The first active control and the first trace of the test library allocate resources that stay.
            SCOPED_TRACE("warm-up");
            strict_container warm_up;
            const ATL::CComPtr<control_object> first = make_control();
            first->SetClientSite(&warm_up);
            ShowWindow(warm_up.window, SW_SHOWNA);
            first->DoVerb(OLEIVERB_UIACTIVATE, nullptr, nullptr, 0, nullptr, nullptr);
            UpdateWindow(first->m_hWnd);
            const registry_key_scope key(HKEY_LOCAL_MACHINE, L"Software\\Classes\\QuillFrameworkWarmUp");
            key.set_string(nullptr, L"");
            DWORD status = 0;
            first->GetMiscStatus(DVASPECT_CONTENT, &status);
            first->Close(OLECLOSE_NOSAVE);
            first->SetClientSite(nullptr);
        }
        ATL::_AtlWinModule.Term();
        before_ = process_resources::now();
        container = std::make_unique<strict_container>();
        control = make_control();
    }

    void TearDown() override
    {
        control.Release();
        EXPECT_EQ(ATL::_pAtlModule->GetLockCount(), 0);
        EXPECT_TRUE(container->released())
            << "site " << container->references() << ", frame " << container->frame.references()
            << ", document window " << container->document.references();
        EXPECT_EQ(container->in_place_balance, 0);
        EXPECT_EQ(container->ui_balance, 0);
        container.reset();
        ATL::_AtlWinModule.Term();
        EXPECT_EQ(process_resources::now(), before_);
        OleUninitialize();
    }

    static ATL::CComPtr<control_object> make_control()
    {
        control_object* made = nullptr;
        EXPECT_EQ(control_object::CreateInstance(&made), S_OK);
        return made;
    }
    HRESULT do_verb(LONG verb, const RECT* position = nullptr)
    {
        return control->DoVerb(verb, nullptr, container.get(), 0, container->window, position);
    }
    // Closes the control as a host does.
    void close()
    {
        EXPECT_EQ(control->Close(OLECLOSE_NOSAVE), S_OK);
        EXPECT_EQ(control->SetClientSite(nullptr), S_OK);
    }
    RECT place_of_control() const
    {
        RECT place{};
        GetWindowRect(control->m_hWnd, &place);
        MapWindowPoints(nullptr, container->window, reinterpret_cast<POINT*>(&place), 2);
        return place;
    }

    std::unique_ptr<strict_container> container;
    ATL::CComPtr<control_object> control;

private:
    process_resources before_;
};

inline bool same(const RECT& left, const RECT& right)
{
    return EqualRect(&left, &right) != FALSE;
}

} // namespace quill::test
