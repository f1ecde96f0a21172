// The object files in the DLL, by the linker's map: each replacement of the C++ runtime once, and no replaced
// object file.
#include "tests/module/loaded_module.h"

#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <set>
#include <string>

namespace quill::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using names = std::set<std::string>;

// Parses the map. A line names a section of the image, a part of an object file, or a symbol in that part,
// each in its own column.
class link_map
{
public:
    explicit link_map(const std::wstring& path)
    {
        std::ifstream file(std::string(path.begin(), path.end()));
        std::string object;
        for (std::string line; std::getline(file, line);) {
            constexpr std::size_t part_column = 32;
            constexpr std::size_t symbol_column = 40;
            if (line.size() > symbol_column && line.find_first_not_of(' ', part_column) == symbol_column)
                objects_of_symbols_[line.substr(symbol_column)].insert(object);
            else if (line.size() > part_column && line[part_column - 1] == ' ' && line[part_column] != ' ')
                objects_.insert(object = object_of(line.substr(part_column)));
        }
    }

    const names& objects() const { return objects_; }
    names objects_with(const std::string& symbol) const
    {
        const auto found = objects_of_symbols_.find(symbol);
        return found == objects_of_symbols_.end() ? names{} : found->second;
    }
    std::size_t symbols() const { return objects_of_symbols_.size(); }

private:
    // A part is written as "folder/file.o:(.section)".
    static std::string object_of(const std::string& part)
    {
        const std::string path = part.substr(0, part.find(":("));
        return path.substr(path.find_last_of('/') + 1);
    }

    names objects_;
    std::map<std::string, names> objects_of_symbols_;
};

struct LinkMap : testing::Test
{
    const link_map map{loaded_module::folder() + L"QuillPDF.IE.map"};
};

TEST_F(LinkMap, IsReadable)
{
    EXPECT_GT(map.symbols(), 1'000u);
    EXPECT_THAT(map.objects_with("DllCanUnloadNow"), ElementsAre("exports.cpp.obj"));
    EXPECT_THAT(map.objects(), Contains("dllcrt2.o"));
}

TEST_F(LinkMap, ShowsEachReplacementOnce)
{
    const std::map<std::string, std::string> replaced = {
        {"__cxa_get_globals", "exception_state.cpp.obj"},
        {"__cxa_get_globals_fast", "exception_state.cpp.obj"},
        {"__cxa_guard_acquire", "static_guard.cpp.obj"},
        {"__cxa_guard_release", "static_guard.cpp.obj"},
        {"__cxa_guard_abort", "static_guard.cpp.obj"},
        {"__cxa_allocate_exception", "exception_memory.cpp.obj"},
        {"__cxa_free_exception", "exception_memory.cpp.obj"},
        {"__cxa_allocate_dependent_exception", "exception_memory.cpp.obj"},
        {"__cxa_free_dependent_exception", "exception_memory.cpp.obj"},
        {"__stack_chk_guard", "stack_guard.cpp.obj"},
        {"__stack_chk_fail", "stack_guard.cpp.obj"},
        {"__chk_fail", "stack_guard.cpp.obj"},
        {"pthread_mutex_init", "thread_functions.cpp.obj"},
        {"pthread_mutex_destroy", "thread_functions.cpp.obj"},
        {"pthread_mutex_lock", "thread_functions.cpp.obj"},
        {"pthread_mutex_unlock", "thread_functions.cpp.obj"},
        {"pthread_cond_destroy", "thread_functions.cpp.obj"},
        {"pthread_once", "thread_functions.cpp.obj"},
        {"clock_gettime", "clock.cpp.obj"},
        {"std::thread::join()", "thread_members.cpp.obj"},
        {"std::condition_variable::notify_one()", "thread_members.cpp.obj"},
        {"std::condition_variable::~condition_variable()", "thread_members.cpp.obj"},
    };
    for (const auto& [function, object] : replaced)
        EXPECT_THAT(map.objects_with(function), ElementsAre(object)) << function;
}

// The thread library installs a handler, an index and handles when the DLL is loaded.
TEST_F(LinkMap, ShowsNoThreadLibrary)
{
    for (const std::string& object : map.objects())
        EXPECT_EQ(object.find("pthread"), std::string::npos) << object;
    for (const char* object : {"thread.o", "condition_variable.o", "emutls.o"})
        EXPECT_THAT(map.objects(), Not(Contains(object)));
    // Destructors at a thread's end, which may run after the module was unloaded.
    EXPECT_THAT(map.objects(), Not(Contains("atexit_thread.o")));
}

// By file name, because symbols differ between versions of the library.
TEST_F(LinkMap, ShowsNoReplacedObjectFile)
{
    for (const char* object : {
             "eh_alloc.o", // contains the reserve for exceptions
             "eh_globals.o",
             "guard.o",
             "guard_error.o",
             "ssp.o",
         })
        EXPECT_THAT(map.objects(), Not(Contains(object)));
}

} // namespace
} // namespace quill::test
