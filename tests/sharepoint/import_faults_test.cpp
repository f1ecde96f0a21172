// Every call that the module makes of the system while a tab visits a SharePoint page fails once.
#include "tests/sharepoint/editor_bench.h"
#include "tests/sharepoint/module_bench.h"
#include "tests/sharepoint/page_visit.h"
#include "tests/support/balance.h"
#include "tests/support/fault_points.h"
#include "tests/support/faults/import_faults.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace quill::test {
namespace {

std::string show(const visit_record& r)
{
    std::string s;
    for (std::size_t i = 0; i < visit_steps; ++i) {
        s += !r.outcomes[i]                ? '-'
             : r.outcomes[i]->code != S_OK ? 'E'
             : r.outcomes[i]->is_cancelled ? 'C'
                                           : 'p';
        s += !r.repeats[i] ? '-' : r.repeats[i]->code != S_OK ? 'E' : r.repeats[i]->is_cancelled ? 'C' : 'p';
        s += ' ';
    }
    return s + (r.is_rewritten ? "R" : "-");
}

TEST(ImportFaults, Explore)
{
    editor_bench editors;
    editors.use_editor();
    import_faults faults;
    std::vector<fault_place> places;
    std::string normal;
    const suite_setup suite{.libraries = {L"crashguard14.dll", L"pdfcore.dll", L"as_compat.dll"}};
    for (int i = 0; i < 3; ++i) {
        module_bench module(suite);
        faults.count();
        {
            fake_scene scene;
            const CComPtr<IObjectWithSite> helper = module.make_helper();
            normal = show(visit_page(scene, helper, true));
        }
        faults.stop();
        places = faults.places();
        std::printf("%zu places %s\n", places.size(), normal.c_str());
    }
    const bool memory = GetEnvironmentVariableW(L"QUILL_MEMORY", nullptr, 0) != 0;
    for (const fault_place& place : places) {
        if (memory != (place.group == memory_group))
            continue;
        std::printf("%s\n", to_text(place).c_str());
        std::fflush(stdout);
        expect_balance_in_loop([&] {
            module_bench module(suite);
            faults.fail(place);
            fake_scene scene;
            CComPtr<IObjectWithSite> helper;
            module.create_helper(&helper);
            if (helper) {
                const std::string seen = show(visit_page(scene, helper, true));
                helper.Release();
                std::printf("   %d %s %s\n", faults.has_failed(), seen.c_str(),
                            seen == normal ? "same" : "OTHER");
            } else
                std::printf("   none\n");
            faults.stop();
            helper = module.make_helper();
            fake_scene next;
            EXPECT_EQ(show(visit_page(next, helper, true)), normal);
        });
    }
}

} // namespace
} // namespace quill::test
