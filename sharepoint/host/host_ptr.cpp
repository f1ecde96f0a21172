#include "sharepoint/host/host_ptr.h"

namespace quill {
namespace {

bool has_same_identity(IUnknown* left, IUnknown* right)
{
    const host_ptr<IUnknown> left_identity = query<IUnknown>(left);
    const host_ptr<IUnknown> right_identity = query<IUnknown>(right);
    return left_identity && left_identity.get() == right_identity.get();
}

} // namespace

bool is_same_object(IUnknown* left, IUnknown* right)
{
    if (left == right)
        return true;
    if (!left || !right)
        return false;
    const bool is_same = has_same_identity(left, right);
    barrier::throw_if_handled();
    return is_same;
}

} // namespace quill
