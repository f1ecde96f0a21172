// The numbers of live objects in QuillPages.dll and of references to them, with which tests detect leaks.
// The DLL exports the function as quill_count_living_objects.
#pragma once

namespace quill {

struct live_objects
{
    long pages = 0;
    long elements = 0;
    long collections = 0;
    long events = 0;
    long connection_points = 0;
    long downloads = 0;
    long embedded_sites = 0;
    long references = 0; // to all of these, including those between them

    friend bool operator==(const live_objects&, const live_objects&) = default;
};

// Not synchronised: no other thread may use a page during the call.
using count_live_objects_function = void(live_objects* counts);

} // namespace quill
