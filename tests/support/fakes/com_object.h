// Bases of the COM objects that tests implement: interface map, reference count, lifetime.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>
#include <unknwn.h>

#include <atomic>
#include <string>
#include <tuple>
#include <utility>

namespace quill::test {

// The interface that a base implements: the base itself, or X for a generated without_X<X>.
template <class Base>
struct interface_of_base
{
    using type = Base;
};
template <template <class> class Without, class Interface>
struct interface_of_base<Without<Interface>>
{
    using type = Interface;
};

// Offers IUnknown and the interfaces of its bases; derived classes add others in find. The reference count
// may change on any thread. Use test_object or heap_object, which define the lifetime.
template <class... Bases>
class com_object : public Bases...
{
public:
    com_object(const com_object&) = delete;
    com_object& operator=(const com_object&) = delete;
    virtual ~com_object() = default;

    long references() const { return references_; }
    IUnknown* unknown() { return static_cast<first_base*>(this); }

    STDMETHODIMP QueryInterface(REFIID iid, void** out) override
    {
        if (!out) {
            ADD_FAILURE() << "QueryInterface without an out parameter";
            return E_POINTER;
        }
        *out = nullptr;
        IUnknown* const found = lookup(iid);
        if (!found)
            return E_NOINTERFACE;
        found->AddRef();
        *out = found;
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references_); }
    STDMETHODIMP_(ULONG) Release() override
    {
        const long left = --references_;
        if (left < 0) {
            ADD_FAILURE() << "released once too often";
            references_ = 0;
            return 0;
        }
        if (left == 0)
            on_last_release();
        return static_cast<ULONG>(left);
    }

protected:
    explicit com_object(long references) : references_(references) {}

    // Borrowed interface of that identifier; nullptr if the object does not have it.
    IUnknown* lookup(REFIID iid) { return IsEqualIID(iid, __uuidof(IUnknown)) ? unknown() : find(iid); }

    // The same for any identifier but that of IUnknown.
    virtual IUnknown* find(REFIID iid)
    {
        IUnknown* found = nullptr;
        const auto look_at = [&]<class Base>(Base* base) {
            if (!found && IsEqualIID(iid, __uuidof(typename interface_of_base<Base>::type)))
                found = base;
        };
        (look_at(static_cast<Bases*>(this)), ...);
        return found;
    }
    virtual void on_last_release() {}

private:
    using first_base = std::tuple_element_t<0, std::tuple<Bases...>>;

    std::atomic<long> references_;
};

// A member or local of its test. A reference that is not released at its end fails the test.
template <class... Bases>
class test_object : public com_object<Bases...>
{
public:
    explicit test_object(std::string name = "the object") : com_object<Bases...>(0), name_(std::move(name)) {}
    ~test_object() override { EXPECT_EQ(this->references(), 0) << name_ << " is still referenced"; }

    const std::string& name() const { return name_; }

private:
    const std::string name_;
};

// Deletes itself at its last Release. Created with one reference, which the creator owns.
template <class... Bases>
class heap_object : public com_object<Bases...>
{
protected:
    heap_object() : com_object<Bases...>(1) {}
    void on_last_release() override { delete this; }
};

} // namespace quill::test
