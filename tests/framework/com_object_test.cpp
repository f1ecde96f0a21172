// Objects, creators, interface maps: every reference and every lock is counted.
#include "tests/framework/counted_object.h"
#include "tests/framework/framework_module.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace quill::test {
namespace {

constexpr IID IID_extra = {0x3C0B7A11, 0x52D4, 0x4E6F, {0x9A, 0x10, 0x6D, 0x2B, 0x88, 0x41, 0x7E, 0x21}};
constexpr IID IID_refused = {0x3C0B7A11, 0x52D4, 0x4E6F, {0x9A, 0x10, 0x6D, 0x2B, 0x88, 0x41, 0x7E, 0x22}};
constexpr IID IID_blind = {0x3C0B7A11, 0x52D4, 0x4E6F, {0x9A, 0x10, 0x6D, 0x2B, 0x88, 0x41, 0x7E, 0x23}};
constexpr IID IID_chained = {0x3C0B7A11, 0x52D4, 0x4E6F, {0x9A, 0x10, 0x6D, 0x2B, 0x88, 0x41, 0x7E, 0x24}};

int living = 0;
int final_releases = 0;

class chained_base : public IPersist
{
public:
    virtual ~chained_base() = default;
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID*) override { return E_NOTIMPL; }
    static const ATL::_ATL_INTMAP_ENTRY* WINAPI _GetEntries() noexcept
    {
        using _ComMapClass = chained_base;
        static const ATL::_ATL_INTMAP_ENTRY entries[] = {
            COM_INTERFACE_ENTRY_IID(IID_chained, IPersist){nullptr, nullptr, nullptr, 0}};
        return entries;
    }
};

template <class ThreadModel>
class sample : public CComObjectRootEx<ThreadModel>,
               public IObjectWithSiteImpl<sample<ThreadModel>>,
               public IServiceProvider,
               public chained_base
{
public:
    sample() { ++living; }
    ~sample() override
    {
        --living;
        // The reference that a method takes during destruction does not destroy the object a second time.
        this->InternalAddRef();
        this->InternalRelease();
    }
    void FinalRelease() { ++final_releases; }

    DECLARE_NOT_AGGREGATABLE(sample)
    BEGIN_COM_MAP(sample)
    COM_INTERFACE_ENTRY(IObjectWithSite)
    COM_INTERFACE_ENTRY(IServiceProvider)
    COM_INTERFACE_ENTRY2_IID(IID_extra, IUnknown, IServiceProvider)
    COM_INTERFACE_ENTRY_FUNC(IID_refused, 7, &refuse)
    COM_INTERFACE_ENTRY_NOINTERFACE(IDispatch)
    COM_INTERFACE_ENTRY_CHAIN(chained_base)
    COM_INTERFACE_ENTRY_FUNC_BLIND(9, &blind)
    END_COM_MAP()

    HRESULT STDMETHODCALLTYPE QueryService(REFGUID, REFIID, void** ppv) override
    {
        *ppv = nullptr;
        return E_NOTIMPL;
    }
    static HRESULT WINAPI refuse(void*, REFIID, void**, DWORD_PTR data)
    {
        return data == 7 ? E_ACCESSDENIED : S_OK;
    }
    static HRESULT WINAPI blind(void* self, REFIID iid, void** ppv, DWORD_PTR data)
    {
        if (!IsEqualGUID(iid, IID_blind) || data != 9)
            return E_NOINTERFACE;
        return static_cast<sample*>(self)->_InternalQueryInterface(IID_IUnknown, ppv);
    }
};

using single_sample = sample<CComSingleThreadModel>;

struct ComObject : testing::Test
{
    ComObject() { final_releases = 0; }
    ~ComObject() override
    {
        EXPECT_EQ(living, 0);
        EXPECT_EQ(the_module().GetLockCount(), 0);
    }
};

template <class Sample>
struct EachModel : ComObject
{
};
using models = testing::Types<sample<CComSingleThreadModel>, sample<CComMultiThreadModel>,
                              sample<CComMultiThreadModelNoCS>>;
TYPED_TEST_SUITE(EachModel, models);

TYPED_TEST(EachModel, IsDestroyedWithItsLastReference)
{
    CComObject<TypeParam>* object = nullptr;
    ASSERT_EQ(CComObject<TypeParam>::CreateInstance(&object), S_OK);
    EXPECT_EQ(object->m_dwRef, 0);
    EXPECT_EQ(the_module().GetLockCount(), 1);
    EXPECT_EQ(object->AddRef(), 1u);
    EXPECT_EQ(object->AddRef(), 2u);
    {
        const typename TypeParam::ObjectLock lock(*object);
        const typename TypeParam::ObjectLock again(*object);
    }
    EXPECT_EQ(object->Release(), 1u);
    EXPECT_EQ(living, 1);
    EXPECT_EQ(object->Release(), 0u);
    EXPECT_EQ(living, 0);
    EXPECT_EQ(final_releases, 1);
}

TEST_F(ComObject, QueriesItsMapInOrder)
{
    CComObject<single_sample>* object = nullptr;
    ASSERT_EQ(CComObject<single_sample>::CreateInstance(&object), S_OK);
    const CComPtr<IUnknown> keeper(object->GetUnknown());

    CComPtr<IUnknown> unknown;
    EXPECT_EQ(object->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&unknown)), S_OK);
    EXPECT_EQ(unknown, static_cast<IObjectWithSite*>(object)); // the first entry
    CComPtr<IServiceProvider> provider;
    EXPECT_EQ(object->QueryInterface(&provider), S_OK);
    EXPECT_EQ(provider, static_cast<IServiceProvider*>(object));
    CComPtr<IUnknown> extra;
    EXPECT_EQ(object->QueryInterface(IID_extra, reinterpret_cast<void**>(&extra)), S_OK);
    EXPECT_EQ(extra, static_cast<IUnknown*>(static_cast<IServiceProvider*>(object)));
    CComPtr<IUnknown> chained;
    EXPECT_EQ(object->QueryInterface(IID_chained, reinterpret_cast<void**>(&chained)), S_OK);
    EXPECT_EQ(chained, static_cast<IPersist*>(object));
    CComPtr<IUnknown> blind;
    EXPECT_EQ(object->QueryInterface(IID_blind, reinterpret_cast<void**>(&blind)), S_OK);
    EXPECT_EQ(blind, unknown);
    EXPECT_EQ(object->m_dwRef, 6);

    for (const auto& [iid, result] :
         {std::pair{IID_refused, E_ACCESSDENIED}, std::pair{IID_IDispatch, E_NOINTERFACE},
          std::pair{IID_IStream, E_NOINTERFACE}}) {
        void* out = &out;
        EXPECT_EQ(object->QueryInterface(iid, &out), result);
        EXPECT_EQ(out, nullptr);
    }
    EXPECT_EQ(object->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(object->m_dwRef, 6);
}

TEST_F(ComObject, NoLockLeavesTheModuleAlone)
{
    auto* const object = new CComObjectNoLock<single_sample>;
    EXPECT_EQ(the_module().GetLockCount(), 0);
    object->AddRef();
    EXPECT_EQ(object->Release(), 0u);
}

TEST_F(ComObject, CachedObjectLocksForOthersOnly)
{
    auto* const object = new CComObjectCached<single_sample>;
    object->AddRef();
    EXPECT_EQ(the_module().GetLockCount(), 0);
    object->AddRef();
    object->AddRef();
    EXPECT_EQ(the_module().GetLockCount(), 1);
    object->Release();
    EXPECT_EQ(the_module().GetLockCount(), 1);
    object->Release();
    EXPECT_EQ(the_module().GetLockCount(), 0);
    EXPECT_EQ(object->Release(), 0u);
}

TEST_F(ComObject, ModuleIsLockedUntilTheLastDestructorIsDone)
{
    struct slow_to_go : single_sample
    {
        ~slow_to_go() override { EXPECT_EQ(the_module().GetLockCount(), 1); }
    };
    CComObject<slow_to_go>* object = nullptr;
    ASSERT_EQ(CComObject<slow_to_go>::CreateInstance(&object), S_OK);
    object->AddRef();
    object->Release();
    EXPECT_EQ(the_module().GetLockCount(), 0);
}

template <int how>
class failing : public single_sample
{
public:
    DECLARE_PROTECT_FINAL_CONSTRUCT()
    failing()
    {
        if (how == 0)
            throw std::bad_alloc();
        if (how == 1)
            throw CAtlException(E_ACCESSDENIED);
        if (how == 2)
            throw std::runtime_error("constructor");
    }
    HRESULT FinalConstruct()
    {
        // Returns a reference that is released at once: it must not be the last one.
        AddRef();
        Release();
        if (how == 3)
            throw std::bad_alloc();
        return how == 4 ? E_HANDLE : S_OK;
    }
};

template <int how>
HRESULT create_failing(REFIID iid = IID_IUnknown)
{
    void* out = &out;
    const HRESULT hr = CComCreator<CComObject<failing<how>>>::CreateInstance(nullptr, iid, &out);
    EXPECT_EQ(out != nullptr, SUCCEEDED(hr));
    if (SUCCEEDED(hr))
        static_cast<IUnknown*>(out)->Release();
    EXPECT_EQ(living, 0);
    EXPECT_EQ(the_module().GetLockCount(), 0);
    return hr;
}

TEST_F(ComObject, FailureAtEachStepOfCreationLeaksNothing)
{
    EXPECT_EQ(create_failing<0>(), E_OUTOFMEMORY);
    EXPECT_EQ(create_failing<1>(), E_ACCESSDENIED);
    EXPECT_EQ(create_failing<2>(), E_FAIL);
    EXPECT_EQ(create_failing<3>(), E_OUTOFMEMORY);
    EXPECT_EQ(create_failing<4>(), E_HANDLE);
    EXPECT_EQ(create_failing<5>(IID_IStream), E_NOINTERFACE);
    EXPECT_EQ(create_failing<5>(), S_OK);
    CComObject<failing<4>>* object = reinterpret_cast<CComObject<failing<4>>*>(0x10);
    EXPECT_EQ(CComObject<failing<4>>::CreateInstance(&object), E_HANDLE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(CComObject<failing<4>>::CreateInstance(nullptr), E_POINTER);
}

TEST_F(ComObject, CreatorThatRefusesAggregation)
{
    counted_object outer;
    using creator = single_sample::_CreatorClass;
    EXPECT_EQ(creator::CreateInstance(outer.unknown(), IID_IUnknown, nullptr), E_POINTER);
    void* out = &out;
    EXPECT_EQ(creator::CreateInstance(outer.unknown(), IID_IUnknown, &out), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(outer.queries, 0);
    EXPECT_EQ(creator::CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(creator::CreateInstance(nullptr, IID_IUnknown, &out), S_OK);
    static_cast<IUnknown*>(out)->Release();
}

TEST_F(ComObject, SiteIsHeldOnce)
{
    counted_object site;
    {
        CComObject<single_sample>* object = nullptr;
        ASSERT_EQ(CComObject<single_sample>::CreateInstance(&object), S_OK);
        const CComPtr<IObjectWithSite> with_site(object);
        EXPECT_EQ(with_site->SetSite(site.unknown()), S_OK);
        EXPECT_EQ(with_site->SetSite(site.unknown()), S_OK);
        EXPECT_EQ(site.references(), 1);
        EXPECT_EQ(with_site->GetSite(IID_IUnknown, nullptr), E_POINTER);
        CComPtr<IServiceProvider> provider;
        EXPECT_EQ(with_site->GetSite(IID_IServiceProvider, reinterpret_cast<void**>(&provider)), S_OK);
        EXPECT_EQ(site.references(), 2);
        void* out = &out;
        EXPECT_EQ(with_site->GetSite(IID_IDispatch, &out), E_NOINTERFACE);
        EXPECT_EQ(out, nullptr);

        counted_object child;
        EXPECT_EQ(object->SetChildSite(child.unknown()), S_OK);
        EXPECT_EQ(child.site, site.unknown());
        EXPECT_EQ(object->SetChildSite(nullptr), E_POINTER);

        EXPECT_EQ(with_site->SetSite(nullptr), S_OK);
        out = &out;
        EXPECT_EQ(with_site->GetSite(IID_IUnknown, &out), E_FAIL);
        EXPECT_EQ(out, nullptr);
        EXPECT_EQ(with_site->SetSite(site.unknown()), S_OK);
    }
    EXPECT_EQ(site.references(), 0);
}

} // namespace
} // namespace quill::test
