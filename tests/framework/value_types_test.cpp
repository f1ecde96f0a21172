// Smart pointers, strings and variants.
#include "tests/framework/counted_object.h"

#include <atlbase.h>
#include <gtest/gtest.h>

namespace quill::test {
namespace {

TEST(ComPtr, HoldsOneReference)
{
    counted_object object;
    {
        CComPtr<IObjectWithSite> pointer(&object);
        EXPECT_EQ(object.references(), 1);
        const CComPtr<IObjectWithSite> copy(pointer);
        EXPECT_EQ(object.references(), 2);
        CComPtr<IObjectWithSite> moved(std::move(pointer));
        EXPECT_EQ(object.references(), 2);
        EXPECT_FALSE(pointer.p);
    }
    EXPECT_EQ(object.references(), 0);
}

// An exception of the object reaches the caller and leaks no reference.
TEST(ComPtr, PropagatesExceptionsOfAnObject)
{
    struct throwing_object : counted_object
    {
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { throw 5; }
    };
    throwing_object object;
    counted_object other;
    EXPECT_THROW(CComQIPtr<IServiceProvider>(object.unknown()), int);
    EXPECT_THROW(AtlIsEqualObject(other.unknown(), object.unknown()), int);
    CComPtr<IObjectWithSite> pointer(&object);
    CComPtr<IServiceProvider> service;
    EXPECT_THROW(service = pointer, int);
    EXPECT_THROW(pointer.QueryInterface(&service), int);
    EXPECT_EQ(object.references(), 1);
}

// What a failed call leaves in its out parameter is not the caller's.
TEST(ComPtr, ReleasesNothingThatAFailedQueryLeaves)
{
    struct careless_object : counted_object
    {
        HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override
        {
            *out = static_cast<IUnknown*>(unknown()); // without a reference
            return E_FAIL;
        }
    };
    careless_object object;
    counted_object other;
    const CComPtr<IObjectWithSite> pointer(&object);
    {
        CComPtr<IServiceProvider> service;
        EXPECT_EQ(pointer.QueryInterface(&service), E_FAIL);
        EXPECT_FALSE(service.p);
        EXPECT_FALSE(CComQIPtr<IServiceProvider>(object.unknown()).p);
        EXPECT_FALSE(AtlIsEqualObject(other.unknown(), object.unknown()));
        EXPECT_FALSE(AtlIsEqualObject(object.unknown(), other.unknown()));
    }
    EXPECT_EQ(object.references(), 1);
}

TEST(ComPtr, AssignmentAddsTheReferenceBeforeItReleases)
{
    struct ending_object : counted_object
    {
        void on_last_release() override { ++last_releases; }
        int last_releases = 0;
    };
    ending_object first;
    ending_object second;
    CComPtr<IObjectWithSite> pointer(&first);
    pointer = &second;
    EXPECT_EQ(first.last_releases, 1);
    EXPECT_EQ(second.references(), 1);
    pointer = pointer.p; // the only reference: releasing it first would destroy the object
    EXPECT_EQ(second.last_releases, 0);
    EXPECT_EQ(second.references(), 1);
    pointer = nullptr;
    EXPECT_EQ(second.last_releases, 1);
}

TEST(ComPtr, MoveAssignmentToItselfKeepsTheReference)
{
    counted_object object;
    CComPtr<IObjectWithSite> pointer(&object);
    auto& same = pointer;
    pointer = std::move(same);
    EXPECT_EQ(object.references(), 1);
}

TEST(ComPtr, AttachAndDetachMoveTheReference)
{
    counted_object first;
    counted_object second;
    first.AddRef();
    CComPtr<IObjectWithSite> pointer;
    pointer.Attach(&first);
    EXPECT_EQ(first.references(), 1);
    second.AddRef();
    pointer.Attach(&second);
    EXPECT_EQ(first.references(), 0);
    IObjectWithSite* const raw = pointer.Detach();
    EXPECT_EQ(second.references(), 1);
    EXPECT_FALSE(pointer);
    raw->Release();
}

TEST(ComPtr, ReleaseClearsThePointerBeforeItCallsTheObject)
{
    struct looks_back : counted_object
    {
        ULONG STDMETHODCALLTYPE Release() override
        {
            EXPECT_FALSE(owner->p);
            return counted_object::Release();
        }
        CComPtr<IObjectWithSite>* owner = nullptr;
    } object;
    CComPtr<IObjectWithSite> pointer(&object);
    object.owner = std::addressof(pointer);
    pointer.Release();
    EXPECT_EQ(object.references(), 0);
}

TEST(ComPtr, CopyToChecksAndClears)
{
    counted_object object;
    CComPtr<IObjectWithSite> pointer;
    auto* out = reinterpret_cast<IObjectWithSite*>(0x10);
    EXPECT_EQ(pointer.CopyTo(nullptr), E_POINTER);
    EXPECT_EQ(pointer.CopyTo(&out), S_OK);
    EXPECT_EQ(out, nullptr);
    pointer = &object;
    EXPECT_EQ(pointer.CopyTo(&out), S_OK);
    EXPECT_EQ(out, &object);
    EXPECT_EQ(object.references(), 2);
    out->Release();
}

TEST(ComPtr, QueryInterfaceOfAnEmptyPointerFails)
{
    const CComPtr<IUnknown> empty;
    auto* out = reinterpret_cast<IDispatch*>(0x10);
    EXPECT_EQ(empty.QueryInterface(&out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(empty.QueryInterface(static_cast<IDispatch**>(nullptr)), E_POINTER);
}

TEST(ComPtr, ComparesIdentities)
{
    counted_object first;
    counted_object second;
    const CComPtr<IObjectWithSite> pointer(&first);
    EXPECT_TRUE(pointer.IsEqualObject(static_cast<IServiceProvider*>(&first)));
    EXPECT_FALSE(pointer.IsEqualObject(second.unknown()));
    EXPECT_FALSE(pointer.IsEqualObject(nullptr));
    EXPECT_TRUE(CComPtr<IUnknown>().IsEqualObject(nullptr));
}

TEST(ComPtr, SetSiteReachesTheObject)
{
    counted_object object;
    counted_object site;
    CComPtr<IServiceProvider> pointer(&object);
    EXPECT_EQ(pointer.SetSite(site.unknown()), S_OK);
    EXPECT_EQ(object.site, site.unknown());
    EXPECT_EQ(object.references(), 1);
}

TEST(ComQIPtr, QueriesItsInterface)
{
    counted_object object;
    {
        const CComQIPtr<IServiceProvider> provider(object.unknown());
        EXPECT_EQ(provider.p, static_cast<IServiceProvider*>(&object));
        EXPECT_EQ(object.references(), 1);
        const CComQIPtr<IDispatch> missing(object.unknown());
        EXPECT_FALSE(missing);
        const CComQIPtr<IDispatch> none(nullptr);
        EXPECT_FALSE(none);
    }
    EXPECT_EQ(object.references(), 0);
}

TEST(ComQIPtr, AssignmentOfAnObjectWithoutTheInterfaceClearsIt)
{
    counted_object first;
    counted_object second;
    CComQIPtr<IServiceProvider> provider(first.unknown());
    provider = second.unknown();
    EXPECT_EQ(first.references(), 0);
    EXPECT_EQ(second.references(), 1);
    CComQIPtr<IDispatch> dispatch;
    dispatch = second.unknown();
    EXPECT_FALSE(dispatch);
    CComPtr<IObjectWithSite> with_site;
    with_site = CComPtr<IServiceProvider>(&first);
    EXPECT_EQ(with_site.p, static_cast<IObjectWithSite*>(&first));
}

TEST(ComBSTR, OwnsItsText)
{
    const CComBSTR text(L"abc");
    CComBSTR copy(text);
    EXPECT_NE(copy.m_str, text.m_str);
    EXPECT_TRUE(copy == text);
    EXPECT_TRUE(copy == L"abc");
    CComBSTR moved(std::move(copy));
    EXPECT_FALSE(copy.m_str);
    EXPECT_EQ(moved.Length(), 3u);
    moved = moved.m_str;
    EXPECT_TRUE(moved == L"abc");
    moved = moved.m_str + 1; // part of itself
    EXPECT_TRUE(moved == L"bc");
    moved.Empty();
    EXPECT_TRUE(moved == L"");
    EXPECT_TRUE(CComBSTR() == CComBSTR(L""));
}

TEST(ComBSTR, KeepsZeroCharacters)
{
    CComBSTR text(3, L"a\0b");
    EXPECT_EQ(text.Length(), 3u);
    const CComBSTR copy(text);
    EXPECT_EQ(copy.Length(), 3u);
    EXPECT_FALSE(copy == L"a");
    BSTR out = nullptr;
    EXPECT_EQ(text.CopyTo(&out), S_OK);
    EXPECT_EQ(SysStringLen(out), 3u);
    SysFreeString(out);
    EXPECT_EQ(text.CopyTo(nullptr), E_POINTER);
}

TEST(ComBSTR, Appends)
{
    CComBSTR text;
    EXPECT_EQ(text.Append(L"ab"), S_OK);
    EXPECT_EQ(text.Append(L"cdef", 1), S_OK);
    EXPECT_EQ(text.Append(static_cast<LPCOLESTR>(nullptr)), S_OK);
    EXPECT_EQ(text.Append(L"x", -1), E_INVALIDARG);
    text += L"d";
    EXPECT_EQ(text.Append(text), S_OK);
    EXPECT_TRUE(text == L"abcdabcd");
    EXPECT_TRUE(CComBSTR("narrow") == L"narrow");
}

TEST(ComVariant, TypesFollowTheArguments)
{
    const auto type = [](const CComVariant& value) { return value.vt; };
    EXPECT_EQ(type(CComVariant()), VT_EMPTY);
    EXPECT_EQ(type(CComVariant(true)), VT_BOOL);
    EXPECT_EQ(CComVariant(true).boolVal, VARIANT_TRUE);
    EXPECT_EQ(type(CComVariant(7)), VT_I4);
    EXPECT_EQ(type(CComVariant(7L)), VT_I4);
    EXPECT_EQ(type(CComVariant(7L, VT_ERROR)), VT_ERROR);
    EXPECT_EQ(type(CComVariant(7u)), VT_UI4);
    EXPECT_EQ(type(CComVariant(7ul)), VT_UI4);
    EXPECT_EQ(type(CComVariant(7ll)), VT_I8);
    EXPECT_EQ(type(CComVariant(7ull)), VT_UI8);
    EXPECT_EQ(type(CComVariant(1.5)), VT_R8);
    EXPECT_EQ(CComVariant(1.5).dblVal, 1.5);
    EXPECT_EQ(type(CComVariant(1.5f)), VT_R4);
    EXPECT_EQ(type(CComVariant(L"x")), VT_BSTR);
    EXPECT_EQ(type(CComVariant(CComBSTR(L"x"))), VT_BSTR);
    EXPECT_EQ(type(CComVariant(static_cast<IDispatch*>(nullptr))), VT_DISPATCH);
    EXPECT_EQ(type(CComVariant(static_cast<IUnknown*>(nullptr))), VT_UNKNOWN);
}

TEST(ComVariant, CountsTheInterfaceItHolds)
{
    counted_object object;
    {
        CComVariant first(object.unknown());
        CComVariant second(first);
        EXPECT_EQ(object.references(), 2);
        second = 5;
        EXPECT_EQ(object.references(), 1);
        second = first;
        EXPECT_EQ(object.references(), 2);
        CComVariant third(std::move(second));
        EXPECT_EQ(object.references(), 2);
        EXPECT_EQ(second.vt, VT_EMPTY);
        auto& same = third;
        third = same;
        EXPECT_EQ(object.references(), 2);
        VARIANT out;
        VariantInit(&out);
        EXPECT_EQ(third.Detach(&out), S_OK);
        EXPECT_EQ(object.references(), 2);
        EXPECT_EQ(first.Attach(&out), S_OK);
        EXPECT_EQ(object.references(), 1);
        EXPECT_EQ(out.vt, VT_EMPTY);
    }
    EXPECT_EQ(object.references(), 0);
}

TEST(ComVariant, ConvertsAndCompares)
{
    CComVariant value(L"12");
    EXPECT_EQ(value.ChangeType(VT_I4), S_OK);
    EXPECT_TRUE(value == CComVariant(12));
    EXPECT_FALSE(value == CComVariant(13));
    EXPECT_FALSE(value == CComVariant(L"12"));
    EXPECT_EQ(value.ChangeType(VT_I4, CComVariant(L"x").bstrVal
                                          ? &static_cast<const VARIANT&>(CComVariant(L"x"))
                                          : nullptr),
              DISP_E_TYPEMISMATCH);
}

TEST(CriticalSections, LocksNest)
{
    CComAutoCriticalSection section;
    {
        const CComCritSecLock first(section);
        const CComCritSecLock second(section);
    }
    CComSafeDeleteCriticalSection never_initialised;
    EXPECT_EQ(never_initialised.Term(), S_OK);
}

} // namespace
} // namespace quill::test
