#include "retrieval/save_as/save_as.h"

#include "platform/unique_com_memory.h"
#include "retrieval/save_as/browser_save.h"
#include "retrieval/save_as/suggested_name.h"

#include <new>
#include <optional>
#include <string>

namespace quill {
namespace {

// FOLDERID_InternetCache: in protected mode, the browser's low-integrity cache.
constexpr GUID internet_cache_folder = {
    0x352481E8, 0x33BE, 0x4251, {0xBA, 0x85, 0x60, 0x07, 0xCA, 0xED, 0xCF, 0x9D}};

constexpr DWORD overwrite_prompt = 0x2; // OFN_OVERWRITEPROMPT

// The browser keeps the chosen destination until the save is completed or cancelled.
class pending_save
{
public:
    explicit pending_save(HANDLE state) noexcept : state_(state) {}
    pending_save(const pending_save&) = delete;
    pending_save& operator=(const pending_save&) = delete;
    ~pending_save()
    {
        if (!is_completed_)
            IECancelSaveFile(state_);
    }

    bool save(const wchar_t* source) noexcept
    {
        is_completed_ = true;
        return IESaveFile(state_, source) == S_OK;
    }

private:
    HANDLE state_;
    bool is_completed_ = false;
};

class temporary_file
{
public:
    // Creates an empty file in folder; path() is empty after a failure.
    explicit temporary_file(const wchar_t* folder) noexcept
    {
        if (GetTempFileNameW(folder, L"qIE", 0, path_) == 0)
            path_[0] = L'\0';
    }
    temporary_file(const temporary_file&) = delete;
    temporary_file& operator=(const temporary_file&) = delete;
    ~temporary_file()
    {
        if (!path_[0] || DeleteFileW(path_) || GetLastError() != ERROR_ACCESS_DENIED)
            return;
        // CopyFileEx copies the read-only attribute, which prevents deletion.
        SetFileAttributesW(path_, FILE_ATTRIBUTE_NORMAL);
        DeleteFileW(path_);
    }

    const wchar_t* path() const noexcept { return path_; }

private:
    wchar_t path_[MAX_PATH] = {};
};

bool save_copy(const wchar_t* local_path, pending_save& pending) noexcept
{
    unique_com_string folder;
    if (FAILED(IEGetWriteableFolderPath(internet_cache_folder, folder.put())) || !folder)
        return false;
    const temporary_file copy(folder.get());
    folder.reset();
    return *copy.path() && CopyFileExW(local_path, copy.path(), nullptr, nullptr, nullptr, 0) &&
           pending.save(copy.path());
}

int save_document(HWND window, const std::wstring& local_path)
{
    const std::optional<std::wstring> name = suggested_file_name(local_path.c_str());
    if (!name)
        return 0;
    unique_com_string destination; // not needed: the browser moves the copy itself
    HANDLE state = nullptr;
    const HRESULT result = IEShowSaveFileDialog(window, name->c_str(), nullptr, L"PDF files (*.pdf)|*.PDF|",
                                                L"pdf", 0, overwrite_prompt, destination.put(), &state);
    if (result == S_FALSE)
        return 1;
    if (result != S_OK)
        return 0;
    pending_save pending(state);
    return save_copy(local_path.c_str(), pending) ? 1 : 0;
}

} // namespace

int SaveDocumentAs(HWND window, const wchar_t* local_path) noexcept
{
    if (!local_path)
        return 0;
    try {
        // The caller's buffer may change while the dialog pumps messages.
        return save_document(window, std::wstring(local_path));
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

} // namespace quill
