#include "acceptance/questions.h"

namespace quill::acceptance {

const std::vector<question>& questions()
{
    static const std::vector<question> all = {
        {"ie-process", "Does the module work in Internet Explorer's own process?", "",
         "the kit hosts the WebBrowser control in a process of its own"},
        {"ie-mode", "Does the module work in Edge's IE mode?", "",
         "IE mode needs Edge, a site list and a policy, which the kit does not change"},
        {"protected-mode", "Does the module work under Enhanced Protected Mode?", "",
         "the kit's process is not a browser's content process"},
        {"low-integrity", "Where can a process of low integrity write?",
         "a process of the administrator, lowered to low integrity, creates a file in each of five folders",
         ""},
        {"per-user-class", "Does CoCreateInstance read the class registration of the user?",
         "the kit, with an administrator's rights, creates a class that is registered for the user only", ""},
        {"save-functions", "Does ieframe.dll have the protected-mode save functions?",
         "the functions are looked up by name", ""},
        {"html-events", "In which order does the HTML engine fire the events of a load and a click?",
         "the browser's events of a library page are recorded as the kit's tab relays them", ""},
        {"html-references", "How does the HTML engine count references to pages?", "",
         "the kit cannot count the references to the engine's objects"},
        {"html-scripts", "What happens with frames and with scripts that do not return?", "",
         "the kit's pages have no frames and no such scripts"},
        {"sent-messages", "Does urlmon dispatch sent messages while it waits for a silent server?",
         "a window of the downloading thread is sent messages while the server is silent", ""},
        {"closing", "How long does closing a document take while its server is silent?",
         "the control is closed during a download from a silent server", ""},
        {"start-binding", "Does URLDownloadToFile forward OnStartBinding to its callback?",
         "a callback counts the calls", ""},
        {"caller-object", "Does urlmon hold the caller object that is passed to URLDownloadToFile?",
         "the references to a caller object are counted during and after a download", ""},
        {"last-release", "On which thread does urlmon release the caller object last?",
         "the caller object records the thread of its last Release", ""},
        {"session-certificates", "Which certificate options does WinINet accept on a session?",
         "the option is set on a session and on a request, and read again", ""},
        {"untrusted-server", "Does a session's certificate option let a request to an untrusted server pass?",
         "requests to a TLS server with a self-signed certificate: without the option, with it on the "
         "session, with it on the request",
         ""},
        {"kept-memory", "What do urlmon and WinINet keep after a download?",
         "handles and threads of the process are counted before and after twenty downloads", ""},
        {"msi-install", "Does Windows Installer install and remove the package?",
         "the package is installed and removed; the report compares what is left", ""},
        {"msi-repair", "Does msiexec /f repair the registration?",
         "a value is deleted and the product repaired", ""},
        {"msi-admin-image", "Does msiexec /a make an administrative image?",
         "an image is made in the kit's work folder", ""},
        {"msi-rollback", "Does a failing installation leave nothing?",
         "a copy of the package with an action that fails at the end is installed", ""},
        {"msi-upgrade", "Does Windows Installer upgrade the package?", "",
         "the kit has the package of one version only"},
        {"msi-loaded", "What happens to a loaded DLL when the product is removed?", "",
         "the answer needs a restart, and the kit does not restart the machine"},
        {"msi-refusals", "Is the package refused without rights and on 32-bit Windows?", "",
         "the kit itself needs an administrator's rights and 64-bit Windows"},
        {"msi-messages", "Which messages does the installer show?", "", "the kit installs without a display"},
        {"group-policy", "Can the package be deployed by group policy?", "",
         "the kit needs no domain and changes no policy"},
        {"signatures", "Does Windows accept the signatures of the DLL and the installer?",
         "WinVerifyTrust is asked about both files, without revocation", ""},
        {"smart-screen", "What does SmartScreen say about the installer?", "",
         "it has no interface that the kit could ask"},
        {"symbols", "Does WinDbg find symbols and sources?", "", "the kit has no debugger"},
        {"diagnosis", "Do the browser's tabs behave as QuillDiagnose.exe says?", "",
         "the report has the program's output; nothing compares it with a browser's tabs"},
        {"benchmarks", "Which ratios of the benchmarks hold on Windows?", "", "the kit has no benchmarks"},
        {"timers-leaks", "Do the timers and leak counts of the tests hold on Windows?", "",
         "the kit has no long runs"},
        {"suite", "Does the module work with the suite's own viewer, editor, crash library and PDF core?", "",
         "the kit has stand-ins for all of them"},
    };
    return all;
}

std::vector<std::string> answer_lines(const std::map<std::string, std::string>& answers,
                                      std::string_view missing)
{
    std::vector<std::string> lines;
    for (const question& each : questions()) {
        const auto answer = answers.find(std::string(each.id));
        lines.push_back(std::string(each.id) + ": " + std::string(each.text));
        if (!each.reason.empty()) {
            lines.push_back("  not answered: " + std::string(each.reason));
            continue;
        }
        lines.push_back("  measured by: " + std::string(each.measured_by));
        if (answer == answers.end())
            lines.push_back("  not answered: " + std::string(missing));
        else
            lines.push_back((answer->second.starts_with("not measured") ? "  " : "  seen: ") +
                            answer->second);
    }
    return lines;
}

} // namespace quill::acceptance
