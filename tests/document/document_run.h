// A document from its creation to its end, for the tests that disturb each of its calls.
#pragma once

#include "tests/document/document_fixture.h"

#include <string>

namespace quill::test {

// Configures the host so that the run reaches every call of a host.
void prepare_host(document_fixture& fixture, activation_order order);

// Opens, uses and closes the document, without the last Release. Results are ignored.
void run_document(document_fixture& fixture);

// The same with a document from a server, loaded by its moniker. Fails the test if a download does not
// deliver its file. Returns the number of downloads.
int run_document_from_server(document_fixture& fixture, const std::wstring& url);

// The number of calls of its host and its viewer in an undisturbed run, interface queries included.
int count_host_calls(activation_order order);

// Names for tests that run for several orders or faults.
std::string name_of(activation_order order);
std::string name_of(call_fault kind);

} // namespace quill::test
