// The browser's commands: which are enabled and what they do.
#include "tests/document/document_fixture.h"

#include <docobj.h>
#include <gtest/gtest.h>
#include <ole2.h>

namespace quill::test {
namespace {

constexpr DWORD untouched = 0x5a5a;
constexpr HRESULT not_supported = OLECMDERR_E_NOTSUPPORTED;
static_assert(static_cast<unsigned long>(not_supported) == 0x80040100);
constexpr GUID some_group = {0x1, 0x2, 0x3, {0x4}};

std::vector<DWORD> status_of(document_fixture& fixture, std::initializer_list<ULONG> ids,
                             const GUID* group = nullptr)
{
    std::vector<OLECMD> commands;
    for (const ULONG id : ids)
        commands.push_back({id, untouched});
    EXPECT_EQ(fixture.as<IOleCommandTarget>()->QueryStatus(group, static_cast<ULONG>(commands.size()),
                                                           commands.data(), nullptr),
              S_OK);
    std::vector<DWORD> flags;
    for (const auto& command : commands)
        flags.push_back(command.cmdf);
    return flags;
}

HRESULT execute(document_fixture& fixture, DWORD id, const GUID* group = nullptr)
{
    return fixture.as<IOleCommandTarget>()->Exec(group, id, OLECMDEXECOPT_DODEFAULT, nullptr, nullptr);
}

QUILL_DOCUMENT_TEST(DocumentCommands, TheFirstKnownCommandAloneIsEnabled)
{
    fixture.create();
    using flags = std::vector<DWORD>;
    EXPECT_EQ(status_of(fixture, {OLECMDID_PRINT, OLECMDID_SAVEAS}), (flags{OLECMDF_ENABLED, untouched}));
    EXPECT_EQ(status_of(fixture, {OLECMDID_SAVEAS, OLECMDID_PRINT}), (flags{OLECMDF_ENABLED, untouched}));
    EXPECT_EQ(status_of(fixture, {OLECMDID_SAVE, OLECMDID_PRINT}), (flags{untouched, OLECMDF_ENABLED}));
    EXPECT_EQ(status_of(fixture, {OLECMDID_OPEN, OLECMDID_COPY, OLECMDID_SAVEAS, OLECMDID_SAVEAS}),
              (flags{untouched, untouched, OLECMDF_ENABLED, untouched}));
    EXPECT_EQ(status_of(fixture, {OLECMDID_OPEN, 0, 0xffffffff}), (flags{untouched, untouched, untouched}));
    EXPECT_EQ(status_of(fixture, {OLECMDID_PRINT}, &some_group), flags{OLECMDF_ENABLED}) << "any group";
    EXPECT_EQ(status_of(fixture, {OLECMDID_PRINTPREVIEW}), flags{untouched});
}

QUILL_DOCUMENT_TEST(DocumentCommands, QueryStatusAcceptsNoCommands)
{
    fixture.create();
    const auto target = fixture.as<IOleCommandTarget>();
    EXPECT_EQ(target->QueryStatus(nullptr, 0, nullptr, nullptr), S_OK);
    OLECMD command{OLECMDID_PRINT, untouched};
    EXPECT_EQ(target->QueryStatus(nullptr, 0, &command, nullptr), S_OK);
    EXPECT_EQ(command.cmdf, untouched);
    target->QueryStatus(nullptr, 3, nullptr, nullptr); // must not crash
}

QUILL_DOCUMENT_TEST(DocumentCommands, TheTextIsNotModified)
{
    fixture.create();
    OLECMDTEXT text{OLECMDTEXTF_NAME, 77, 1, {L'q'}};
    OLECMD command{OLECMDID_PRINT, 0};
    EXPECT_EQ(fixture.as<IOleCommandTarget>()->QueryStatus(nullptr, 1, &command, &text), S_OK);
    EXPECT_EQ(text.cwActual, 77u);
    EXPECT_EQ(text.rgwz[0], L'q');
}

QUILL_DOCUMENT_TEST(DocumentCommands, AreIgnoredWithoutAViewer)
{
    fixture.create();
    EXPECT_EQ(execute(fixture, OLECMDID_PRINT), not_supported);
    EXPECT_EQ(execute(fixture, OLECMDID_SAVEAS), not_supported);
    EXPECT_EQ(execute(fixture, OLECMDID_OPEN), not_supported);
    EXPECT_EQ(execute(fixture, 0, &some_group), not_supported);
    EXPECT_EQ(execute(fixture, 0xffffffff), not_supported);
    EXPECT_EQ(fixture.take_log(),
              (lines{"@ Exec 6", "@ Exec 4", "@ Exec 1", "@ Exec 0", "@ Exec 4294967295"}));
}

QUILL_DOCUMENT_TEST(DocumentCommands, PrintPrintsAndReturnsNotSupported)
{
    fixture.show_file(fixture.pdf());
    fixture.viewer.forget_calls();
    EXPECT_EQ(execute(fixture, OLECMDID_PRINT), not_supported);
    EXPECT_EQ(fixture.viewer.texts(), lines{"12()"});
    fixture.host.calls.make_fail("viewer::12", call_fault::error);
    EXPECT_EQ(execute(fixture, OLECMDID_PRINT, &some_group), not_supported);
    EXPECT_EQ(fixture.viewer.texts(), (lines{"12()", "12()"}));
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCommands, OtherCommandsAreIgnored)
{
    fixture.show_file(fixture.pdf());
    fixture.viewer.forget_calls();
    for (const DWORD id : {OLECMDID_OPEN, OLECMDID_SAVE, OLECMDID_PRINTPREVIEW, OLECMDID_COPY, OLECMDID_ZOOM})
        EXPECT_EQ(execute(fixture, id), not_supported);
    EXPECT_EQ(fixture.viewer.texts(), lines{});
    fixture.close_in_order();
}

// The command succeeds whether or not the browser can save.
QUILL_DOCUMENT_TEST(DocumentCommands, SaveAsSucceedsWithAViewer)
{
    fixture.show_file(fixture.pdf());
    fixture.take_log();
    EXPECT_EQ(execute(fixture, OLECMDID_SAVEAS), S_OK);
    EXPECT_EQ(fixture.take_log(), lines{"@ Exec 4"});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCommands, AreIgnoredAfterDeactivation)
{
    fixture.show_file(fixture.pdf());
    fixture.as<IOleInPlaceObject>()->InPlaceDeactivate();
    fixture.viewer.forget_calls();
    EXPECT_EQ(execute(fixture, OLECMDID_PRINT), not_supported);
    EXPECT_EQ(execute(fixture, OLECMDID_SAVEAS), not_supported);
    EXPECT_EQ(fixture.viewer.texts(), lines{});
    fixture.close_in_order();
}

QUILL_DOCUMENT_TEST(DocumentCommands, ArgumentsAreNotModified)
{
    fixture.show_file(fixture.pdf());
    VARIANT in{};
    in.vt = VT_I4;
    in.lVal = 5;
    VARIANT out{};
    out.vt = VT_I4;
    out.lVal = 6;
    EXPECT_EQ(fixture.as<IOleCommandTarget>()->Exec(nullptr, OLECMDID_PRINT, OLECMDEXECOPT_DONTPROMPTUSER,
                                                    &in, &out),
              not_supported);
    EXPECT_EQ(in.lVal, 5);
    EXPECT_EQ(out.vt, VT_I4);
    EXPECT_EQ(out.lVal, 6);
    fixture.close_in_order();
}

} // namespace
} // namespace quill::test
