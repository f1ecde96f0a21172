// How many objects of QuillPages.dll live, and how many references to them, so that a test can prove that
// whoever used a page has given everything back. The DLL exports quill_count_living_objects.
#pragma once

namespace quill {

struct living_objects
{
    long pages = 0;
    long elements = 0;
    long collections = 0;
    long events = 0;
    long connection_points = 0;
    long downloads = 0;
    long embedded_sites = 0;
    long references = 0; // to all of these, those between themselves included

    friend bool operator==(const living_objects&, const living_objects&) = default;
};

// Single-threaded, as all of the page objects are: pages of other threads must not be at work.
using count_living_objects_function = void(living_objects* counts);

} // namespace quill
