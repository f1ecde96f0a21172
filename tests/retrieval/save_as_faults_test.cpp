// Each call of saving a copy fails once, in every way: the result is the specified one, the browser gets its
// state back once, its strings are freed once, and no file is left but the saved one.
#include "retrieval/save_as/save_as.h"
#include "tests/retrieval/ieframe/save_faults.h"
#include "tests/support/fault_points.h"
#include "tests/support/process_resources.h"
#include "tests/support/task_memory.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

const HWND document_window = reinterpret_cast<HWND>(0x1234);
constexpr char shown_text[] = "%PDF-1.7 of the cache";

class SaveAsFaults : public testing::Test
{
protected:
    void save(const save_fault& fault)
    {
        EXPECT_TRUE(write_file(shown_, shown_text));
        save_browser browser;
        browser.owner = document_window;
        std::optional<ieframe_scope> library;
        if (fault.library)
            library.emplace(*fault.library);
        fault.arrange(browser, shown_);
        const long memory = outstanding_task_memory();
        EXPECT_EQ(SaveDocumentAs(document_window, shown_.c_str()), fault.result);
        EXPECT_EQ(outstanding_task_memory(), memory) << "strings of the browser are freed once";
        expect_tidy(browser, fault);
        if (fault.saves)
            EXPECT_EQ(read_file(browser.destination), shown_text);
    }

private:
    scratch_directory documents_;
    const std::wstring shown_ = documents_ / L"doc.pdf";
};

TEST_F(SaveAsFaults, EndAsPromisedAndLeakNothing)
{
    const save_fault none = no_save_fault();
    const auto faults = every_save_fault();
    const auto save_with_each = [&](bool counts) {
        for (const save_fault& fault : faults) {
            SCOPED_TRACE(fault.name);
            const process_resources before = process_resources::now();
            save(fault);
            save(none); // the next save succeeds
            if (counts)
                EXPECT_EQ(process_resources::now(), before);
        }
    };
    save_with_each(false); // the system allocates resources at a first failure and keeps them
    save_with_each(true);
    report_fault_points("saving a copy", faults.size());
}

} // namespace
} // namespace quill::test
