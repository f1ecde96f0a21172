#include "diagnose/clean_up.h"

#include <gtest/gtest.h>

namespace quill::diagnose {
namespace {

constexpr file_time now = 1000 * ticks_per_day;

folder_entry folder(file_time newest)
{
    return {L"qll7", true, false, 0, newest};
}

folder_entry file(file_time newest)
{
    return {L"a.pdf", false, false, 5, newest};
}

TEST(DownloadFolder, NameIsTheOneThatTheModuleGives)
{
    for (const wchar_t* name : {L"qll0", L"qll1", L"qll10", L"qll2147483646"})
        EXPECT_TRUE(is_download_folder_name(name));
    for (const wchar_t* name : {L"", L"qll", L"qll00", L"qll01", L"qll-1", L"qll1 ", L"qll1.pdf", L"QLL1",
                                L"Qll1", L"qll2147483647", L"qll99999999999", L"xqll1", L"qll\u0661", L"ql1"})
        EXPECT_FALSE(is_download_folder_name(name));
}

TEST(DownloadFolder, IsNoFile)
{
    folder_entry entry = folder(0);
    EXPECT_TRUE(is_download_folder(entry));
    entry.is_folder = false;
    EXPECT_FALSE(is_download_folder(entry));
    entry.is_link = true;
    EXPECT_TRUE(is_download_folder(entry));
    entry.name = L"qllx";
    EXPECT_FALSE(is_download_folder(entry));
}

using names = std::vector<std::wstring>;

TEST(CleanUpPlan, HasEachTemporaryFolderOnce)
{
    product_settings settings;
    settings.system_temp_folder = L"C:\\Temp";
    settings.low_temp_folder = L"C:\\Low\\Temp";
    settings.temp_folder = L"C:\\Temp"; // without the variable, the system's
    EXPECT_TRUE(plan_clean_up(settings).folders == names({L"C:\\Temp", L"C:\\Low\\Temp"}));
    settings.is_temp_folder_set = true;
    settings.temp_folder = L"D:\\Other";
    EXPECT_TRUE(plan_clean_up(settings).folders == names({L"C:\\Temp", L"C:\\Low\\Temp", L"D:\\Other"}));
    settings.temp_folder = L"c:\\low\\TEMP";
    EXPECT_TRUE(plan_clean_up(settings).folders == names({L"C:\\Temp", L"C:\\Low\\Temp"}));
    EXPECT_TRUE(plan_clean_up(settings).skipped.empty());
}

TEST(CleanUpPlan, SkipsARelativeFolderAndAMissingOneOfTheSystem)
{
    product_settings settings;
    settings.system_temp_variable = L"TMP";
    settings.system_temp_value = L"C:\\missing";
    settings.low_temp_folder = L"C:\\Low\\Temp";
    settings.temp_variable = L"QUILL_TMP_FOLDER";
    settings.temp_folder = L"Temp";
    settings.is_temp_folder_set = true;
    const clean_up_plan plan = plan_clean_up(settings);
    EXPECT_TRUE(plan.folders == names({L"C:\\Low\\Temp"}));
    ASSERT_EQ(plan.skipped.size(), 2u);
    EXPECT_NE(plan.skipped[0].find(L"TMP is \"C:\\missing\""), std::wstring::npos);
    EXPECT_NE(plan.skipped[1].find(L"\"Temp\", which is no full path"), std::wstring::npos);
}

TEST(DownloadFolder, IsRemovedAfterItsDays)
{
    const file_time limit = now - 30 * ticks_per_day;
    EXPECT_EQ(judge(folder(limit - 1), {file(limit - 1)}, now, 30).what, verdict::remove);
    EXPECT_EQ(judge(folder(limit - 1), {}, now, 30).what, verdict::remove);
    EXPECT_EQ(judge(folder(limit), {file(limit - 1)}, now, 30).what, verdict::too_new);
    EXPECT_EQ(judge(folder(limit - 1), {file(limit)}, now, 30).what, verdict::too_new);
    EXPECT_EQ(judge(folder(0), {file(0)}, now, 3650).what, verdict::too_new);
}

TEST(DownloadFolder, IsNotJudgedBeforeItsDays)
{
    folder_entry link = folder(now - 1);
    link.is_link = true;
    EXPECT_EQ(judge(link, {}, now, 1).what, verdict::too_new);
    EXPECT_EQ(judge(folder(0), {file(0), file(now - 1)}, now, 1).what, verdict::too_new);
}

TEST(DownloadFolder, OfTheFutureIsNew)
{
    EXPECT_EQ(judge(folder(now + 1), {}, now, 1).what, verdict::too_new);
    EXPECT_EQ(judge(folder(0), {file(~file_time{0})}, now, 1).what, verdict::too_new);
}

TEST(DownloadFolder, WithOtherContentsIsForeign)
{
    folder_entry link = file(0);
    link.is_link = true;
    folder_entry inner = file(0);
    inner.is_folder = true;
    folder_entry other = file(0);
    other.name = L"a.docx";
    folder_entry upper = file(0);
    upper.name = L"a.PDF";
    const std::vector<std::vector<folder_entry>> all = {
        {link}, {inner}, {other}, {upper}, {file(0), file(0)}};
    for (const auto& contents : all) {
        const judgement judged = judge(folder(0), contents, now, 1);
        EXPECT_EQ(judged.what, verdict::foreign);
        EXPECT_FALSE(judged.reason.empty());
    }
}

TEST(DownloadFolder, IsNoLinkFileOrOtherName)
{
    folder_entry link = folder(0);
    link.is_link = true;
    folder_entry no_folder = folder(0);
    no_folder.is_folder = false;
    folder_entry other = folder(0);
    other.name = L"qllx";
    for (const folder_entry& entry : {link, no_folder, other})
        EXPECT_EQ(judge(entry, {}, now, 1).what, verdict::foreign);
}

} // namespace
} // namespace quill::diagnose
