// The module's DLL, and the library of the suite's viewer control.
#include "diagnose/image_file.h"
#include "diagnose/lookup.h"
#include "diagnose/path_place.h"

namespace quill::diagnose {
namespace {

struct library
{
    std::wstring path;
    file_contents contents;
    image_facts image;
};

library read_library(const machine& computer, const std::wstring& path)
{
    library result{path, computer.read(path), {}};
    if (result.contents.error == ERROR_SUCCESS && !result.contents.is_folder)
        result.image = read_image(result.contents.bytes);
    return result;
}

// What keeps the system from loading the file as a 64-bit library; empty if nothing does.
std::wstring load_error(const library& library)
{
    const std::wstring name = quoted(library.path);
    if (library.contents.error != ERROR_SUCCESS)
        return name + L": " + error_text(library.contents.error);
    if (library.contents.is_folder)
        return name + L" is a folder";
    if (library.contents.bytes.empty())
        return name + L" is empty";
    const std::wstring size = L" (" + counted(library.contents.bytes.size(), L"byte") + L")";
    switch (library.image.kind) {
    case image_kind::none:
        return name + size + L" is no program file";
    case image_kind::truncated:
        return name + size + L" is damaged: it ends too early";
    case image_kind::bits_32:
        return name + L" is for 32-bit programs";
    case image_kind::other:
        return name + L" is for another processor (0x" + hexadecimal(library.image.machine, 4) + L")";
    case image_kind::bits_64:
        break;
    }
    if (!library.image.is_library)
        return name + L" is a program, not a library";
    return library.image.has_class_objects ? L""
                                           : name + L" has no classes (it does not export DllGetClassObject)";
}

void add(report& findings, bool is_right, state otherwise, const wchar_t* check, std::wstring found,
         std::wstring expected, std::wstring to_do)
{
    findings.push_back({is_right ? state::ok : otherwise, check, std::move(found), std::move(expected),
                        is_right ? L"" : std::move(to_do)});
}

void check_threading_model(const subject& subject, report& findings)
{
    const found_value found =
        class_value(subject.computer, L"CLSID\\" + subject.product.document_class + L"\\InprocServer32",
                    L"ThreadingModel");
    const auto text = text_of(found.value);
    add(findings, text && equal_names(*text, L"Apartment"), state::problem, L"DLL, threading model",
        described(found.key, L"ThreadingModel") + L": " + described(found.value), L"Apartment", repair);
}

void check_version(const subject& subject, const library* dll, report& findings)
{
    finding result{state::problem, L"DLL, version", L"not examined: there is no DLL that can be loaded",
                   subject.product.module_file + L" of version " + subject.product.version, repair};
    if (dll) {
        const auto& version = dll->image.version;
        if (!version) {
            result.found = dll->image.has_version
                               ? L"the version information is damaged"
                               : L"no version information: the resources are damaged or missing";
        } else {
            const bool is_module = equal_names(version->original_name, subject.product.module_file);
            const bool is_same = text_of(*version) == subject.product.version;
            result.found = quoted(version->original_name) + L" of version " + text_of(*version);
            result.result = !is_module ? state::problem : is_same ? state::ok : state::note;
            if (!is_module)
                result.to_do = L"the registered DLL is another product's: " + std::wstring(repair);
            else
                result.to_do = is_same ? L"" : L"use the QuillDiagnose.exe of the installed version";
        }
    }
    findings.push_back(result);
}

void check_contents(const library* dll, report& findings)
{
    finding result{state::problem, L"DLL, contents", L"not examined: there is no DLL that can be loaded",
                   L"the checksum in the file's header is the file's", repair};
    if (dll && !dll->image.has_checksum) {
        result.found = L"the file has no checksum, and a released one has: it was changed after it was built";
    } else if (dll && !dll->image.is_checksum_wrong) {
        result = {state::ok, result.check, L"the checksum is right", result.expected, L""};
    } else if (dll) {
        result.found = L"the file was changed after it was built: the checksum is wrong";
    }
    findings.push_back(result);
}

void check_signature(const subject& subject, const library* dll, report& findings)
{
    finding result{state::note, L"DLL, signature", L"not examined: there is no DLL that can be loaded",
                   L"a valid signature, or none", repair};
    const signature_facts facts = dll ? subject.computer.signature(dll->path) : signature_facts{};
    const std::wstring status = L" (0x" + hexadecimal(facts.status, 8) + L")";
    if (dll) {
        switch (facts.kind) {
        case signature_kind::valid:
            result.result = state::ok;
            result.to_do.clear();
            result.found = L"signed, and the system trusts the signature";
            break;
        case signature_kind::none:
            result.found = L"not signed" + status;
            result.to_do = L"nothing, unless a policy of your own demands signatures";
            break;
        case signature_kind::broken:
            result.result = state::problem;
            result.found = L"signed, but the signature is not valid or not trusted" + status;
            result.to_do =
                L"repair the product; if that does not help, install the publisher's root certificate";
            break;
        case signature_kind::unknown:
            result.found = L"not tested: the system could not verify it" + status;
            result.to_do = L"examine the signature in the properties of the file";
            break;
        }
    }
    findings.push_back(result);
}

} // namespace

void check_library(const subject& subject, report& findings)
{
    const server_path server =
        server_of_class(subject.computer, subject.product.document_class, registry_view::bits_64);
    const std::wstring where = described(server.value.key, L"") + L": ";
    std::optional<library> dll;
    std::wstring error;
    if (!server.path)
        error = described(server.value.value);
    else if (!is_full_path(*server.path))
        error = quoted(*server.path) +
                (is_absolute(*server.path) ? L" has slashes instead of backslashes" : L" is no full path");
    else {
        dll = read_library(subject.computer, *server.path);
        error = load_error(*dll);
    }
    const library* const examined = dll && error.empty() ? &*dll : nullptr;
    add(findings, examined != nullptr, state::problem, L"DLL, file",
        where + (examined ? quoted(examined->path) : error),
        L"the full path of a 64-bit " + subject.product.module_file, repair);
    check_threading_model(subject, findings);
    check_version(subject, examined, findings);
    check_contents(examined, findings);
    check_signature(subject, examined, findings);
}

namespace {

constexpr const wchar_t* install_viewer =
    L"install or repair the suite with its 64-bit viewer: without it nothing is shown";

bool is_own_class(const product_constants& product, const std::wstring& clsid)
{
    return equal_names(clsid, product.document_class) || equal_names(clsid, product.helper_class);
}

bool is_own_library(const product_constants& product, const library& library)
{
    const auto& version = library.image.version;
    return equal_names(file_name(library.path), product.module_file) ||
           (version && equal_names(version->original_name, product.module_file));
}

// The server of a class as CLSCTX_INPROC_SERVER and CLSCTX_LOCAL_SERVER find it.
finding viewer_server(const subject& subject, const std::wstring& clsid)
{
    const server_path server = server_of_class(subject.computer, clsid, registry_view::bits_64);
    const found_value local = class_value(subject.computer, L"CLSID\\" + clsid + L"\\LocalServer32", L"");
    finding result{state::problem, L"Viewer, server", L"", L"the path of a 64-bit library", install_viewer};
    if (!server.path) {
        const server_path other = server_of_class(subject.computer, clsid, registry_view::bits_32);
        result.found = described(server.value.key, L"") + L": " + described(server.value.value);
        if (text_of(local.value)) {
            result.result = state::note;
            result.found = L"a program of its own: " + described(local.value);
            result.to_do = L"nothing if PDFs are shown; the path is not examined";
        } else if (other.path) {
            result.found += L"; there is a viewer for 32-bit programs only: " + quoted(*other.path);
        }
        return result;
    }
    // COM passes a name without a folder to LoadLibrary, which searches the system's folder.
    const std::wstring path =
        is_full_path(*server.path) ? *server.path : subject.system.system_folder + L"\\" + *server.path;
    const library viewer = read_library(subject.computer, path);
    std::wstring error = load_error(viewer);
    if (is_own_library(subject.product, viewer))
        error = quoted(path) + L" is this product's DLL, not the viewer";
    result.found = described(server.value.key, L"") + L": " + (error.empty() ? quoted(path) : error);
    if (error.empty()) {
        result.result = state::ok;
        result.to_do.clear();
    }
    return result;
}

// COM creates the class that the viewer's TreatAs names, if there is one.
void check_viewer_server(const subject& subject, const std::wstring& clsid, report& findings)
{
    const found_value other = substitute_of_class(subject.computer, clsid);
    if (is_missing(other.value)) {
        findings.push_back(viewer_server(subject, clsid));
        return;
    }
    const std::wstring instead =
        L"another class is created instead, " + described(other.key, L"") + L": " + described(other.value);
    finding result{state::problem, L"Viewer, server", instead, L"no TreatAs, the path of a 64-bit library",
                   install_viewer};
    const auto text = text_of(other.value);
    if (text && is_own_class(subject.product, *text)) {
        result.found += L", a class of this product";
    } else if (text && is_class_identifier(*text)) {
        const finding server = viewer_server(subject, *text);
        result.found += L"; " + server.found;
        if (!is_missing(substitute_of_class(subject.computer, *text).value))
            result.found += L"; that class has a TreatAs too";
        else if (server.result != state::problem)
            result.result = state::note;
        if (result.result == state::note)
            result.to_do = L"nothing if PDFs are shown; otherwise delete the key TreatAs";
    } else {
        result.found += L", which is no class identifier";
    }
    findings.push_back(result);
}

} // namespace

void check_viewer(const subject& subject, report& findings)
{
    const std::wstring& progid = subject.product.viewer_progid;
    found_value found = class_value(subject.computer, progid + L"\\CLSID", L"");
    const auto current = text_of(class_value(subject.computer, progid + L"\\CurVer", L"").value);
    if (is_missing(found.value) && current && !current->empty())
        found = class_value(subject.computer, *current + L"\\CLSID", L"");
    const auto clsid = text_of(found.value);
    const bool is_own = clsid && is_own_class(subject.product, *clsid);
    const bool is_class = clsid && is_class_identifier(*clsid) && !is_own;
    add(findings, is_class, state::problem, L"Viewer, ProgID",
        described(found.key, L"") + L": " + described(found.value) +
            (is_own ? L", a class of this product, not the viewer's" : L""),
        L"the class identifier of " + progid, install_viewer);
    if (is_class)
        check_viewer_server(subject, *clsid, findings);
    else
        findings.push_back({state::problem, L"Viewer, server", L"not examined: its class is not known",
                            L"the path of a 64-bit library", install_viewer});
}

} // namespace quill::diagnose
