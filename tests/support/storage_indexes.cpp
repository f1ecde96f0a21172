#include "tests/support/storage_indexes.h"

#include <ostream>
#include <vector>

namespace quill::test {
namespace {

template <class Allocate, class Free>
DWORD count_free(DWORD none, const Allocate& allocate, const Free& free)
{
    std::vector<DWORD> taken;
    for (DWORD index = allocate(); index != none; index = allocate())
        taken.push_back(index);
    for (const DWORD index : taken)
        free(index);
    return static_cast<DWORD>(taken.size());
}

} // namespace

storage_indexes storage_indexes::free_now()
{
    storage_indexes indexes;
    indexes.tls = count_free(TLS_OUT_OF_INDEXES, TlsAlloc, TlsFree);
    indexes.fls = count_free(FLS_OUT_OF_INDEXES, [] { return FlsAlloc(nullptr); }, FlsFree);
    return indexes;
}

std::ostream& operator<<(std::ostream& out, const storage_indexes& indexes)
{
    return out << "{free TLS " << indexes.tls << ", FLS " << indexes.fls << "}";
}

} // namespace quill::test
