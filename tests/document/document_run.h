// One whole life of a document, for the tests that make something go wrong at each of its calls.
#pragma once

#include "tests/document/document_fixture.h"

#include <string>

namespace quill::test {

// Sets the host up so that the life reaches everything that a host is asked.
void prepare_host(document_fixture& fixture, activation_order order);

// Opened, used, taken down; without the last Release. Results are not looked at.
void live(document_fixture& fixture);

// The same with a document that comes from a server, by its moniker. Fails the test when a download does not
// end with its file handed over. Gives the number of downloads.
int live_from_server(document_fixture& fixture, const std::wstring& url);

// How many calls of its host and its viewer an undisturbed life makes, interface queries included.
int count_host_calls(activation_order order);

// What the tests that run for several orders or ways of failing are called by.
std::string name_of(activation_order order);
std::string name_of(bad_answer kind);

} // namespace quill::test
