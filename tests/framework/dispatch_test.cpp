// IDispatch through the type library in the program's resources.
#include "tests/framework/framework_module.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace quill::test {

struct ICalculator : IDispatch
{
    virtual HRESULT STDMETHODCALLTYPE Add(long left, long right, long* sum) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Name(BSTR* name) = 0;
    virtual HRESULT STDMETHODCALLTYPE Fail() = 0;
};

} // namespace quill::test

__CRT_UUID_DECL(quill::test::ICalculator, 0x3C0B7A11, 0x52D4, 0x4E6F, 0x9A, 0x10, 0x6D, 0x2B, 0x88, 0x41,
                0x7E, 0x31)

namespace quill::test {
namespace {

class calculator : public CComObjectRootEx<CComSingleThreadModel>,
                   public IDispatchImpl<ICalculator, &__uuidof(ICalculator), &LIBID_framework, 0xFFFF, 0xFFFF>
{
public:
    BEGIN_COM_MAP(calculator)
    COM_INTERFACE_ENTRY(ICalculator)
    COM_INTERFACE_ENTRY(IDispatch)
    END_COM_MAP()

    HRESULT STDMETHODCALLTYPE Add(long left, long right, long* sum) override
    {
        *sum = left + right;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_Name(BSTR* name) override { return CComBSTR(L"calculator").CopyTo(name); }
    HRESULT STDMETHODCALLTYPE Fail() override { return E_ACCESSDENIED; }
};

struct Dispatch : testing::Test
{
    Dispatch()
    {
        CComObject<calculator>* object = nullptr;
        EXPECT_EQ(CComObject<calculator>::CreateInstance(&object), S_OK);
        dispatch = object;
    }
    ~Dispatch() override
    {
        dispatch.Release();
        EXPECT_EQ(the_module().GetLockCount(), 0);
        the_module().Term(); // releases the type information
    }

    HRESULT id_of(const wchar_t* name, DISPID& id)
    {
        std::wstring text = name;
        LPOLESTR names[] = {text.data()};
        return dispatch->GetIDsOfNames(IID_NULL, names, 1, LOCALE_NEUTRAL, &id);
    }

    CComPtr<IDispatch> dispatch;
};

TEST_F(Dispatch, NamesAreFoundWithAndWithoutTheCache)
{
    DISPID id = 0;
    EXPECT_EQ(id_of(L"Add", id), S_OK);
    EXPECT_EQ(id, 7);
    EXPECT_EQ(id_of(L"Name", id), S_OK);
    EXPECT_EQ(id, 8);
    EXPECT_EQ(id_of(L"ADD", id), S_OK); // not the cached spelling
    EXPECT_EQ(id, 7);
    EXPECT_EQ(id_of(L"Subtract", id), DISP_E_UNKNOWNNAME);
}

TEST_F(Dispatch, ParameterNamesBelongToTheirFunction)
{
    wchar_t function[] = L"Add";
    wchar_t parameter[] = L"right";
    LPOLESTR names[] = {function, parameter};
    DISPID ids[2] = {};
    EXPECT_EQ(dispatch->GetIDsOfNames(IID_NULL, names, 2, LOCALE_NEUTRAL, ids), S_OK);
    EXPECT_EQ(ids[0], 7);
    EXPECT_EQ(ids[1], 1);
}

TEST_F(Dispatch, NullArgumentsAreRefused)
{
    wchar_t function[] = L"Add";
    LPOLESTR names[] = {function};
    DISPID id = 0;
    EXPECT_EQ(dispatch->GetIDsOfNames(IID_NULL, nullptr, 1, LOCALE_NEUTRAL, &id), E_INVALIDARG);
    EXPECT_EQ(dispatch->GetIDsOfNames(IID_NULL, names, 1, LOCALE_NEUTRAL, nullptr), E_INVALIDARG);
    EXPECT_EQ(dispatch->GetIDsOfNames(IID_NULL, names, 0, LOCALE_NEUTRAL, &id), E_INVALIDARG);
    EXPECT_EQ(dispatch->GetTypeInfoCount(nullptr), E_POINTER);
    EXPECT_EQ(dispatch->GetTypeInfo(0, LOCALE_NEUTRAL, nullptr), E_POINTER);
    EXPECT_EQ(
        dispatch->Invoke(7, IID_NULL, LOCALE_NEUTRAL, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr),
        E_INVALIDARG);
}

TEST_F(Dispatch, MethodsAreCalled)
{
    CComVariant arguments[] = {CComVariant(5), CComVariant(L"37")}; // reversed; the text is converted
    DISPPARAMS parameters{arguments, nullptr, 2, 0};
    CComVariant result;
    EXPECT_EQ(dispatch->Invoke(7, IID_NULL, LOCALE_NEUTRAL, DISPATCH_METHOD, &parameters, &result, nullptr,
                               nullptr),
              S_OK);
    EXPECT_TRUE(result == CComVariant(42));
    DISPPARAMS none{};
    CComVariant name;
    EXPECT_EQ(
        dispatch->Invoke(8, IID_NULL, LOCALE_NEUTRAL, DISPATCH_PROPERTYGET, &none, &name, nullptr, nullptr),
        S_OK);
    EXPECT_TRUE(name == CComVariant(L"calculator"));
    EXPECT_EQ(
        dispatch->Invoke(99, IID_NULL, LOCALE_NEUTRAL, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
        DISP_E_MEMBERNOTFOUND);
}

TEST_F(Dispatch, FailuresReachTheCaller)
{
    DISPPARAMS none{};
    EXCEPINFO exception{};
    const HRESULT hr =
        dispatch->Invoke(9, IID_NULL, LOCALE_NEUTRAL, DISPATCH_METHOD, &none, nullptr, &exception, nullptr);
    EXPECT_TRUE(hr == E_ACCESSDENIED || (hr == DISP_E_EXCEPTION && exception.scode == E_ACCESSDENIED));
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
}

TEST_F(Dispatch, TypeInformationIsReturned)
{
    UINT count = 0;
    EXPECT_EQ(dispatch->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1u);
    CComPtr<ITypeInfo> info;
    EXPECT_EQ(dispatch->GetTypeInfo(0, LOCALE_NEUTRAL, &info), S_OK);
    ITypeInfo* missing = info;
    EXPECT_EQ(dispatch->GetTypeInfo(1, LOCALE_NEUTRAL, &missing), DISP_E_BADINDEX);
    EXPECT_EQ(missing, nullptr);
    info.Release();
}

TEST_F(Dispatch, TypeInformationIsLoadedAgainAfterItsRelease)
{
    DISPID id = 0;
    EXPECT_EQ(id_of(L"Add", id), S_OK);
    the_module().Term();
    EXPECT_EQ(id_of(L"Add", id), S_OK);
    EXPECT_EQ(id, 7);
}

TEST_F(Dispatch, ManyThreadsLoadItOnce)
{
    std::thread threads[8];
    for (auto& thread : threads) {
        thread = std::thread([this] {
            DISPID id = 0;
            EXPECT_EQ(id_of(L"Add", id), S_OK);
            EXPECT_EQ(id, 7);
        });
    }
    for (auto& thread : threads)
        thread.join();
}

TEST(DispatchOfAForeignLibrary, FailsWhileItIsNotRegistered)
{
    static constexpr GUID no_library = {
        0x3C0B7A11, 0x52D4, 0x4E6F, {0x9A, 0x10, 0x6D, 0x2B, 0x88, 0x41, 0x7E, 0x7F}};
    CComTypeInfoHolder holder(&__uuidof(ICalculator), &no_library, 1, 0);
    CComPtr<ITypeInfo> info;
    EXPECT_EQ(holder.GetTI(LOCALE_NEUTRAL, &info), TYPE_E_LIBNOTREGISTERED);
    EXPECT_FALSE(info);
}

} // namespace
} // namespace quill::test
