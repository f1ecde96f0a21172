// The document class and the content types in the registry: the machine's keys against the product's
// registration scripts, the user's keys that shadow them, and the 32-bit view.
#include "diagnose/lookup.h"

#include <algorithm>

namespace quill::diagnose {
namespace {

constexpr const wchar_t* content_types_key = L"SOFTWARE\\Classes\\MIME\\Database\\Content Type";
constexpr const wchar_t* remove_user_key =
    L"delete the user's key, or register the product for this user again";

std::wstring class_key(const std::wstring& clsid)
{
    return std::wstring(classes_key) + L"\\CLSID\\" + clsid;
}

std::wstring pre_approval_key(const std::wstring& clsid)
{
    return L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Ext\\PreApproved\\" + clsid;
}

// Without these the browser or COM may refuse the class. The others are for scripts and programming tools.
bool is_needed(const std::wstring& path, const std::wstring& key)
{
    for (const wchar_t* name :
         {L"InprocServer32", L"Control", L"DocObject", L"EnableFullPage", L"MiscStatus"}) {
        if (is_below(path, key + L"\\" + name))
            return true;
    }
    return equal_names(path, key);
}

void check_class(const subject& subject, report& findings)
{
    const std::wstring key = class_key(subject.product.document_class);
    std::vector<std::wstring> wrong;
    std::vector<std::wstring> incomplete;
    for (const registered_value& row : subject.product.document_values) {
        if (is_below(row.path, content_types_key) ||
            is_below(row.path, pre_approval_key(subject.product.document_class)))
            continue;
        if (const std::wstring text = difference(subject.computer, row); !text.empty())
            (is_needed(row.path, key) ? wrong : incomplete).push_back(text);
    }
    const registry_key category =
        machine_key(key + L"\\Implemented Categories\\" + subject.product.app_container_category);
    if (const DWORD error = subject.computer.open(category); error != ERROR_SUCCESS)
        wrong.push_back(described(category) + L": " + error_text(error));
    const found_value other = substitute_of_class(subject.computer, subject.product.document_class);
    if (!is_missing(other.value))
        wrong.push_back(described(other.key, L"") + L": " + described(other.value) + L" instead of no key");
    const registry_key library =
        machine_key(std::wstring(classes_key) + L"\\TypeLib\\" + subject.product.type_library);
    if (const DWORD error = subject.computer.open(library); error != ERROR_SUCCESS)
        incomplete.push_back(described(library) + L": " + error_text(error));

    finding result{state::ok, L"Document class, registration for the machine", L"complete",
                   L"what the product registers below " + described(machine_key(key)), L""};
    if (!wrong.empty() || !incomplete.empty()) {
        result.result = wrong.empty() ? state::note : state::problem;
        wrong.insert(wrong.end(), incomplete.begin(), incomplete.end());
        result.found = joined(wrong);
        result.to_do = repair;
    }
    findings.push_back(result);
}

// The library's path is checked as such: see check_library().
void check_user_class(const subject& subject, report& findings)
{
    const std::wstring path = class_key(subject.product.document_class);
    finding result{state::ok, L"Document class, registration for the user", L"none",
                   L"no key " + described(user_key(path)) + L", and no key of the product's ProgIDs there",
                   L""};
    auto rows = read_user_rows(subject.computer, subject.product.document_values);
    std::erase_if(rows, [](const user_row& row) { return is_below(row.row->path, content_types_key); });
    const DWORD error = subject.computer.open(user_key(path));
    if (!rows.empty() || !is_missing(error)) {
        result.result = state::note;
        std::vector<std::wstring> texts;
        if (error != ERROR_SUCCESS && !is_missing(error)) {
            result.result = state::problem;
            texts.push_back(described(user_key(path)) + L": " + error_text(error));
        }
        for (const user_row& row : rows) {
            texts.push_back(row.text);
            if (!row.is_same && !row.row->is_module_path && is_needed(row.row->path, path))
                result.result = state::problem;
        }
        result.found = texts.empty() ? L"an empty key" : joined(texts);
        result.found += L"; a tab uses these instead of the machine's";
        result.to_do = remove_user_key;
    }
    findings.push_back(result);
}

void check_other_view(const subject& subject, report& findings)
{
    const server_path server =
        server_of_class(subject.computer, subject.product.document_class, registry_view::bits_32);
    finding result{state::ok, L"Document class, 32-bit view", L"not registered",
                   L"not registered: the DLL is for 64-bit tabs only", L""};
    if (!is_missing(server.value.value)) {
        result.result = state::note;
        result.found = described(server.value.key, L"") + L": " + described(server.value.value);
        result.to_do = L"delete the key, unless another product needs it: 32-bit tabs use it";
    }
    findings.push_back(result);
}

void check_pre_approval(const subject& subject, report& findings)
{
    const registry_key key = machine_key(pre_approval_key(subject.product.document_class));
    const DWORD error = subject.computer.open(key);
    findings.push_back(
        {error == ERROR_SUCCESS ? state::ok : state::note, L"Pre-approval",
         error == ERROR_SUCCESS ? L"the key exists" : described(key) + L": " + error_text(error),
         described(key) + L": without it the browser asks before it runs the control in a page",
         error == ERROR_SUCCESS ? L"" : repair});
}

// The last part of a content type's key.
std::wstring type_of(const std::wstring& path)
{
    return path.substr(std::wstring_view(content_types_key).size() + 1);
}

// The content type's extension, by which the browser names a file of this type.
void add_extension(const subject& subject, const std::wstring& path, finding& result)
{
    for (const registered_value& row : subject.product.document_values) {
        if (!row.name || *row.name != L"Extension" || !equal_names(row.path, path))
            continue;
        const found_value found =
            first_value(subject.computer, {user_key(path), machine_key(path)}, L"Extension");
        const auto text = text_of(found.value);
        const auto own = text_of(registry_value{ERROR_SUCCESS, row.type, row.data});
        if (text && own && equal_names(*text, *own))
            return;
        result.found += L"; " + described(found.key, L"Extension") + L": " + described(found.value);
        result.expected += L", Extension " + own.value_or(L"");
        if (result.result == state::ok) {
            result.result = state::note;
            result.to_do = repair;
        }
    }
}

void check_content_type(const subject& subject, const registered_value& row, report& findings)
{
    const std::wstring type = type_of(row.path);
    const auto own = text_of(registry_value{ERROR_SUCCESS, row.type, row.data});
    const found_value found =
        first_value(subject.computer, {user_key(row.path), machine_key(row.path)}, L"CLSID");
    const auto clsid = text_of(found.value);
    finding result{state::ok, L"Content type " + type,
                   described(found.key, L"CLSID") + L": " + described(found.value), own.value_or(L""), L""};
    const bool is_own = clsid && own && equal_names(*clsid, *own);
    const registry_value of_machine = subject.computer.value(machine_key(row.path), L"CLSID");
    const auto machine_clsid = text_of(of_machine);
    const bool is_user = found.key.root == registry_root::user && !is_missing(found.value);
    if (!is_own) {
        // Servers and the extension .pdf say application/pdf; the others are rare.
        result.result = type == L"application/pdf" ? state::problem : state::note;
        result.to_do = clsid ? L"another product shows this type: make this one the owner by a repair, or, "
                               L"if the value is the user's, delete it"
                             : std::wstring(repair);
    } else if (is_user && !(machine_clsid && equal_names(*machine_clsid, *own))) {
        result.result = state::note;
        result.found +=
            L", which shadows " + described(machine_key(row.path), L"CLSID") + L": " + described(of_machine);
        result.to_do = L"repair the product if other users are to see PDFs too";
    } else if (is_user) {
        result.found += L", which shadows the machine's same value";
    }
    add_extension(subject, row.path, result);
    findings.push_back(result);
}

void check_extension(const subject& subject, report& findings)
{
    constexpr const wchar_t* expected = L"application/pdf";
    const found_value found = class_value(subject.computer, L".pdf", L"Content Type");
    const auto text = text_of(found.value);
    const bool is_right = text && equal_names(*text, expected);
    findings.push_back({is_right ? state::ok : state::note, L"Content type of the extension .pdf",
                        described(found.key, L"Content Type") + L": " + described(found.value), expected,
                        is_right ? L""
                                 : L"set the value if local files or files of servers that state no type are "
                                   L"to open in the browser; the product does not write it"});
}

} // namespace

void check_registration(const subject& subject, report& findings)
{
    check_class(subject, findings);
    check_user_class(subject, findings);
    check_other_view(subject, findings);
    check_pre_approval(subject, findings);
}

void check_content_types(const subject& subject, report& findings)
{
    for (const registered_value& row : subject.product.document_values) {
        if (row.name && *row.name == L"CLSID" && is_below(row.path, content_types_key))
            check_content_type(subject, row, findings);
    }
    check_extension(subject, findings);
}

} // namespace quill::diagnose
