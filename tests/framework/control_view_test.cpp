// The picture of the control: drawn for the host, in its window and as data; notifications of its changes.
#include "tests/framework/control_fixture.h"
#include "tests/framework/recording_sink.h"

#include <cstring>

namespace quill::test {
namespace {

class FrameworkControlView : public control_fixture
{
protected:
    void TearDown() override
    {
        control.Release();
        EXPECT_EQ(sink.references(), 0);
        control_fixture::TearDown();
    }

    recording_sink sink;
};

TEST_F(FrameworkControlView, ExtentIsKeptAndAnnounced)
{
    SIZEL extent{};
    EXPECT_EQ(control->IOleObjectImpl<test_control>::GetExtent(DVASPECT_CONTENT, &extent), S_OK);
    EXPECT_EQ(extent.cx, 5080);
    EXPECT_EQ(extent.cy, 5080);
    FORMATETC any{0, nullptr, DVASPECT_CONTENT, -1, TYMED_MFPICT};
    any.cfFormat = CF_METAFILEPICT;
    DWORD connection = 0;
    ASSERT_EQ(control->DAdvise(&any, ADVF_NODATA, &sink, &connection), S_OK);
    SIZEL wanted{1000, 2000};
    EXPECT_EQ(control->SetExtent(DVASPECT_CONTENT, &wanted), S_OK);
    EXPECT_EQ(sink.record.take(), calls{"OnDataChange"});
    EXPECT_TRUE(control->GetDirty());
    EXPECT_EQ(control->SetExtent(DVASPECT_CONTENT, &wanted), S_OK);
    EXPECT_EQ(sink.record.take(), calls{}) << "no change";
    EXPECT_EQ(control->IViewObjectExImpl<test_control>::GetExtent(DVASPECT_CONTENT, -1, nullptr, &extent),
              S_OK);
    EXPECT_EQ(extent.cx, 1000);
    EXPECT_EQ(extent.cy, 2000);
    EXPECT_EQ(control->SetExtent(DVASPECT_ICON, &wanted), DV_E_DVASPECT);
    EXPECT_EQ(control->SetExtent(DVASPECT_CONTENT, nullptr), E_POINTER);
    EXPECT_EQ(control->IOleObjectImpl<test_control>::GetExtent(DVASPECT_ICON, &extent), DV_E_DVASPECT);
    EXPECT_EQ(control->IOleObjectImpl<test_control>::GetExtent(DVASPECT_CONTENT, nullptr), E_POINTER);
    EXPECT_EQ(control->DUnadvise(connection), S_OK);
    EXPECT_EQ(control->DUnadvise(connection), OLE_E_NOCONNECTION);
}

TEST_F(FrameworkControlView, HostDrawsTheControl)
{
    const HDC dc = CreateCompatibleDC(nullptr);
    SetMapMode(dc, MM_ANISOTROPIC);
    SetWindowExtEx(dc, 10, 10, nullptr);
    SetViewportExtEx(dc, 100, 100, nullptr);
    const RECTL bounds{1, 2, 3, 4};
    const auto draw = [&](DWORD aspect, HDC where, const RECTL* rect) {
        return control->Draw(aspect, -1, nullptr, nullptr, nullptr, where, rect, nullptr, nullptr, 0);
    };
    EXPECT_EQ(draw(DVASPECT_CONTENT, dc, &bounds), S_OK);
    ASSERT_EQ(control->drawn.size(), 1u);
    const RECTL& drawn = control->drawn[0];
    EXPECT_EQ(drawn.left, 10);
    EXPECT_EQ(drawn.top, 20);
    EXPECT_EQ(drawn.right, 30);
    EXPECT_EQ(drawn.bottom, 40) << "in pixels";
    EXPECT_EQ(GetMapMode(dc), MM_ANISOTROPIC) << "restored";
    EXPECT_EQ(draw(DVASPECT_ICON, dc, &bounds), DV_E_DVASPECT);
    EXPECT_EQ(draw(DVASPECT_CONTENT, nullptr, &bounds), E_INVALIDARG);
    EXPECT_EQ(draw(DVASPECT_CONTENT, dc, nullptr), E_INVALIDARG);
    EXPECT_EQ(control->drawn.size(), 1u);
    DeleteDC(dc);
}

TEST_F(FrameworkControlView, WindowIsPainted)
{
    control->SetClientSite(container.get());
    ShowWindow(container->window, SW_SHOWNA);
    ASSERT_EQ(do_verb(OLEIVERB_SHOW), S_OK);
    control->drawn.clear();
    InvalidateRect(control->m_hWnd, nullptr, FALSE);
    UpdateWindow(control->m_hWnd);
    ASSERT_GE(control->drawn.size(), 1u);
    EXPECT_EQ(control->drawn.back().right, 200);
    EXPECT_EQ(control->drawn.back().bottom, 150);
    RECT left_over{};
    EXPECT_FALSE(GetUpdateRect(control->m_hWnd, &left_over, FALSE)) << "validated";
    close();
}

TEST_F(FrameworkControlView, ViewDescribesItself)
{
    DWORD status = 0;
    EXPECT_EQ(control->GetViewStatus(&status), S_OK);
    EXPECT_EQ(status, DWORD{VIEWSTATUS_OPAQUE});
    EXPECT_EQ(control->GetViewStatus(nullptr), E_POINTER);
    LOGPALETTE* palette = reinterpret_cast<LOGPALETTE*>(1);
    EXPECT_EQ(control->GetColorSet(DVASPECT_CONTENT, -1, nullptr, nullptr, nullptr, &palette), E_NOTIMPL);
    EXPECT_EQ(palette, nullptr);

    const RECT bounds{0, 0, 10, 10};
    DWORD hit = 9;
    EXPECT_EQ(control->QueryHitPoint(DVASPECT_CONTENT, &bounds, {5, 5}, 0, &hit), S_OK);
    EXPECT_EQ(hit, DWORD{HITRESULT_HIT});
    EXPECT_EQ(control->QueryHitPoint(DVASPECT_CONTENT, &bounds, {10, 5}, 0, &hit), S_OK);
    EXPECT_EQ(hit, DWORD{HITRESULT_OUTSIDE});
    EXPECT_EQ(control->QueryHitPoint(DVASPECT_ICON, &bounds, {5, 5}, 0, &hit), E_FAIL);
    const RECT touching{9, 9, 20, 20};
    const RECT outside{10, 10, 20, 20};
    EXPECT_EQ(control->QueryHitRect(DVASPECT_CONTENT, &bounds, &touching, 0, &hit), S_OK);
    EXPECT_EQ(hit, DWORD{HITRESULT_HIT});
    EXPECT_EQ(control->QueryHitRect(DVASPECT_CONTENT, &bounds, &outside, 0, &hit), S_OK);
    EXPECT_EQ(hit, DWORD{HITRESULT_OUTSIDE});
    EXPECT_EQ(control->QueryHitRect(DVASPECT_CONTENT, nullptr, &outside, 0, &hit), E_POINTER);

    SIZEL natural{};
    DVEXTENTINFO mode{sizeof(DVEXTENTINFO), DVEXTENT_CONTENT, {}};
    EXPECT_EQ(control->GetNaturalExtent(DVASPECT_CONTENT, -1, nullptr, nullptr, &mode, &natural), S_OK);
    EXPECT_EQ(natural.cx, 5080);
    mode.dwExtentMode = DVEXTENT_INTEGRAL;
    EXPECT_EQ(control->GetNaturalExtent(DVASPECT_CONTENT, -1, nullptr, nullptr, &mode, &natural), E_FAIL);
}

TEST_F(FrameworkControlView, ViewSinkIsNotifiedOfChanges)
{
    EXPECT_EQ(control->SetAdvise(DVASPECT_CONTENT, ADVF_PRIMEFIRST, &sink), S_OK);
    EXPECT_EQ(sink.record.take(), calls{"OnViewChange"});
    DWORD aspects = 0;
    DWORD flags = 9;
    ATL::CComPtr<IAdviseSink> held;
    EXPECT_EQ(control->GetAdvise(&aspects, &flags, &held), S_OK);
    EXPECT_EQ(held.p, &sink);
    EXPECT_EQ(aspects, DWORD{DVASPECT_CONTENT});
    EXPECT_EQ(control->GetAdvise(nullptr, nullptr, nullptr), S_OK);
    held.Release();
    EXPECT_EQ(control->FireViewChange(), S_OK);
    EXPECT_EQ(sink.record.take(), calls{"OnViewChange"});
    EXPECT_EQ(control->SetAdvise(DVASPECT_CONTENT, 0, nullptr), S_OK);
    EXPECT_EQ(sink.references(), 0);
}

TEST_F(FrameworkControlView, QuickActivationDoesEverythingAtOnce)
{
    QACONTAINER host{};
    host.cbSize = sizeof host;
    host.pClientSite = container.get();
    host.pAdviseSink = reinterpret_cast<IAdviseSinkEx*>(static_cast<IAdviseSink*>(&sink));
    struct
    {
        QACONTROL control;
        DWORD behind;
    } answer;
    std::memset(&answer, 0x55, sizeof answer);
    answer.control.cbSize = sizeof answer.control;
    EXPECT_EQ(control->QuickActivate(&host, &answer.control), S_OK);
    EXPECT_EQ(answer.control.cbSize, sizeof answer.control);
    EXPECT_EQ(answer.control.dwViewStatus, DWORD{VIEWSTATUS_OPAQUE});
    EXPECT_EQ(answer.control.dwEventCookie, 0u);
    EXPECT_EQ(answer.control.dwPropNotifyCookie, 0u);
    EXPECT_EQ(answer.behind, 0x55555555u);
    EXPECT_EQ(control->m_spClientSite.p, static_cast<IOleClientSite*>(container.get()));
    EXPECT_EQ(control->m_spAdviseSink.p, &sink);

    EXPECT_EQ(control->QuickActivate(nullptr, &answer.control), E_POINTER);
    EXPECT_EQ(control->QuickActivate(&host, nullptr), E_POINTER);
    answer.control.cbSize = 8;
    EXPECT_EQ(control->QuickActivate(&host, &answer.control), E_INVALIDARG);
    SIZEL extent{123, 456};
    EXPECT_EQ(control->SetContentExtent(&extent), S_OK);
    extent = {};
    EXPECT_EQ(control->GetContentExtent(&extent), S_OK);
    EXPECT_EQ(extent.cy, 456);
    close();
}

TEST_F(FrameworkControlView, PictureAsAMetafile)
{
    FORMATETC format{};
    format.cfFormat = CF_METAFILEPICT;
    format.dwAspect = DVASPECT_CONTENT;
    format.lindex = -1;
    format.tymed = TYMED_MFPICT | TYMED_HGLOBAL;
    STGMEDIUM medium{};
    ASSERT_EQ(control->GetData(&format, &medium), S_OK);
    EXPECT_EQ(medium.tymed, DWORD{TYMED_MFPICT});
    EXPECT_EQ(control->drawn.size(), 1u);
    auto* const picture = static_cast<METAFILEPICT*>(GlobalLock(medium.hMetaFilePict));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->mm, MM_ANISOTROPIC);
    EXPECT_EQ(picture->xExt, 5080);
    GlobalUnlock(medium.hMetaFilePict);
    ReleaseStgMedium(&medium);

    format.tymed = TYMED_HGLOBAL;
    EXPECT_EQ(control->GetData(&format, &medium), DV_E_FORMATETC);
    format.tymed = TYMED_MFPICT;
    format.cfFormat = CF_TEXT;
    EXPECT_EQ(control->GetData(&format, &medium), DV_E_FORMATETC);
    format.cfFormat = CF_METAFILEPICT;
    format.dwAspect = DVASPECT_ICON;
    EXPECT_EQ(control->GetData(&format, &medium), DV_E_DVASPECT);
    EXPECT_EQ(control->GetData(nullptr, &medium), E_POINTER);
    EXPECT_EQ(control->GetData(&format, nullptr), E_POINTER);
    DWORD connection = 3;
    EXPECT_EQ(control->DAdvise(nullptr, 0, &sink, &connection), E_POINTER);
    EXPECT_EQ(connection, 0u);
    EXPECT_EQ(control->DAdvise(&format, 0, &sink, nullptr), E_POINTER);
    EXPECT_EQ(control->DUnadvise(1), OLE_E_NOCONNECTION);
}

} // namespace
} // namespace quill::test
