// Shared by the runs in the system's own browser engine: the registered module, a document object that does
// nothing, a web server, and the two kinds of document that are opened in turn.
#pragma once

#include "tests/browser/engine.h"
#include "tests/browser/registered_module.h"
#include "tests/soak/bare_download.h"
#include "tests/soak/document_soak_fixture.h"
#include "tests/soak/download_setup.h"
#include "tests/soak/trivial_document.h"
#include "tests/support/http_server.h"
#include "tests/support/log_file.h"
#include "tests/support/scopes.h"
#include "tests/support/viewer/viewer_class.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>

namespace quill::soak {

class engine_soak_fixture : public testing::Test
{
protected:
    // The last lines of the module: the step at which an opening stopped.
    void print_last_lines() const;
    // The documents of the module that exist, by its log.
    long live_documents() const;

    test::ole_apartment apartment;
    test::log_folder_scope log;
    test::environment_scope level{L"QUILL_LOG_LEVEL", L"trace"};
    download_setup downloads;
    test::registered_module module;
    test::viewer_registration registration;
    test::scratch_directory files;
    trivial_documents trivial;
    test::http_server server;
};

// One kind of document in the engine.
class engine_guest
{
public:
    virtual ~engine_guest() = default;

    // The path of a URL of such a document, and its content type.
    virtual std::wstring path() const = 0;
    virtual std::string type() const = 0;
    // Before the first document of a cycle is opened: the download path of the workers.
    virtual void begin(download_path way) = 0;
    // How many documents of this cycle are complete.
    virtual std::size_t done() const = 0;
    // How often a document was shown that was not requested.
    virtual std::size_t shown() const = 0;
    virtual bool load_waits() const = 0;
    virtual std::size_t workers() const = 0;
    // Later documents do not belong to this guest.
    virtual void leave() = 0;
    // After the last document of a cycle is closed: the number of remaining workers.
    virtual std::size_t end() = 0;
};

class module_guest final : public engine_guest
{
public:
    explicit module_guest(download_setup& downloads) : downloads_(downloads) {}

    std::wstring path() const override { return L"/plan.pdf"; }
    std::string type() const override { return "application/pdf"; }
    void begin(download_path way) override;
    std::size_t done() const override { return viewers_->opened(); }
    std::size_t shown() const override { return viewers_->opened(); }
    bool load_waits() const override;
    std::size_t workers() const override;
    void leave() override {}
    std::size_t end() override;

private:
    download_setup& downloads_;
    std::unique_ptr<viewer_store> viewers_; // the class object keeps each viewer that it has created
};

// Replaces the module's worker: each document has a bare download.
class trivial_guest final : public engine_guest
{
public:
    trivial_guest(trivial_documents& documents, const test::scratch_directory& files)
        : documents_(documents), files_(files)
    {
    }

    std::wstring path() const override { return L"/trivial.bin"; }
    std::string type() const override { return trivial_type; }
    void begin(download_path way) override;
    std::size_t done() const override { return fetched_; }
    std::size_t shown() const override { return 0; }
    bool load_waits() const override { return fetched_ > 0; }
    std::size_t workers() const override { return bare_download::running(); }
    void leave() override { documents_.give_work(nullptr); }
    std::size_t end() override;

private:
    trivial_documents& documents_;
    const test::scratch_directory& files_;
    std::size_t files_made_ = 0;
    std::atomic<std::size_t> fetched_ = 0;
};

} // namespace quill::soak
