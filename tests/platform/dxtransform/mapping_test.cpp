// Where bounds and points lie on the other side.
#include "tests/platform/dxtransform/open_transform.h"

#include <array>
#include <new>

namespace
{

class Mapping : public TransformTest
{
protected:
    // The transform's answer for a point, with what it gave.
    HRESULT Pick(LONG x, LONG y)
    {
        const CDXDVec point(x, y);
        DXVEC input{};
        m_index = 99;
        const HRESULT hr = m_transform->PointPick(&point, &m_index, &input);
        m_point = CDXDVec(input);
        return hr;
    }
    // Two inputs, the first above the second, with these shares.
    void SetupTwo(FakeSurface* upper, FakeSurface* lower, BYTE upperShare, BYTE lowerShare)
    {
        m_transform->m_ulMaxInputs = 2;
        m_transform->pickOrder = [=](ULONG& count, ULONG* indices, BYTE* weights) {
            count = 2;
            indices[0] = 0;
            weights[0] = upperShare;
            indices[1] = 1;
            weights[1] = lowerShare;
        };
        ASSERT_EQ(SetupWith({upper, lower}, m_output), S_OK);
    }

    ULONG m_index = 0;
    CDXDVec m_point;
};

TEST_F(Mapping, OfNoBoundsTakesTheCurrentInputs)
{
    DXBNDS out{};
    EXPECT_EQ(m_transform->MapBoundsIn2Out(nullptr, 0, 0, &out), DXTERR_UNINITIALIZED);
    SetupQuietly();
    EXPECT_EQ(m_transform->MapBoundsIn2Out(nullptr, 0, 0, &out), S_OK);
    EXPECT_TRUE(CDXDBnds(out) == CDXDBnds(4, 3));
}

TEST_F(Mapping, OfSeveralInputsIsAroundAllThatAreThere)
{
    m_transform->m_ulMaxInputs = 3;
    const auto wide = FakeSurface::Make({.width = 9, .height = 1});
    ASSERT_EQ(SetupWith({m_input, nullptr, wide}, m_output), S_OK);
    DXBNDS out{};
    EXPECT_EQ(m_transform->MapBoundsIn2Out(nullptr, 0, 0, &out), S_OK);
    EXPECT_TRUE(CDXDBnds(out) == CDXDBnds(9, 3));
}

TEST_F(Mapping, WithoutInputsStartsFromTheOutput)
{
    m_transform->m_ulNumInRequired = 0;
    ASSERT_EQ(SetupWith({}, m_output), S_OK);
    DXBNDS out{};
    EXPECT_EQ(m_transform->MapBoundsIn2Out(nullptr, 0, 0, &out), S_OK);
    EXPECT_TRUE(CDXDBnds(out) == CDXDBnds(4, 3));
}

TEST_F(Mapping, OfGivenBoundsNeedsNoSetupAndLetsTheTransformDecide)
{
    m_transform->m_ulMaxInputs = 2;
    m_transform->determineBnds = [](CDXDBnds& bounds) {
        bounds[DXB_X].Max += 10;
        return S_FALSE;
    };
    const DXBNDS tall{DXBT_CONTINUOUS, {.C = {{0.0F, 1.0F}, {0.0F, 7.0F}, {}, {}}}};
    const std::array<DXBNDS, 2> in{CDXDBnds(2, 2), tall};
    DXBNDS out{};
    EXPECT_EQ(m_transform->MapBoundsIn2Out(in.data(), 2, 0, &out), S_FALSE);
    EXPECT_TRUE(CDXDBnds(out) == CDXDBnds(12, 7));
}

TEST_F(Mapping, ToTheOutputChecksItsArguments)
{
    const CDXDBnds in(1, 1);
    DXBNDS out = CDXDBnds(5, 5);
    EXPECT_EQ(m_transform->MapBoundsIn2Out(&in, 1, 0, nullptr), E_POINTER);
    EXPECT_EQ(m_transform->MapBoundsIn2Out(&in, 1, 1, &out), E_INVALIDARG);
    EXPECT_EQ(m_transform->MapBoundsIn2Out(&in, 2, 0, &out), E_INVALIDARG);
    m_transform->determineBnds = [](CDXDBnds&) -> HRESULT { throw std::bad_alloc(); };
    EXPECT_EQ(m_transform->MapBoundsIn2Out(&in, 1, 0, &out), E_OUTOFMEMORY);
    EXPECT_TRUE(CDXDBnds(out) == CDXDBnds(5, 5));
}

TEST_F(Mapping, ToAnInputCopiesAndChecksItsArguments)
{
    const CDXDBnds out(RECT{1, 2, 3, 4});
    DXBNDS in{};
    EXPECT_EQ(m_transform->MapBoundsOut2In(0, &out, 0, &in), S_OK);
    EXPECT_TRUE(CDXDBnds(in) == out);
    EXPECT_EQ(m_transform->MapBoundsOut2In(0, nullptr, 0, &in), E_POINTER);
    EXPECT_EQ(m_transform->MapBoundsOut2In(0, &out, 0, nullptr), E_POINTER);
    EXPECT_EQ(m_transform->MapBoundsOut2In(1, &out, 0, &in), E_INVALIDARG);
    EXPECT_EQ(m_transform->MapBoundsOut2In(0, &out, 1, &in), E_INVALIDARG);
}

TEST_F(Mapping, PickingChecksItsArgumentsAndNeedsSetup)
{
    const CDXDVec point;
    DXVEC in{};
    ULONG index = 0;
    EXPECT_EQ(m_transform->PointPick(nullptr, &index, &in), E_POINTER);
    EXPECT_EQ(m_transform->PointPick(&point, nullptr, &in), E_POINTER);
    EXPECT_EQ(m_transform->PointPick(&point, &index, nullptr), E_POINTER);
    EXPECT_EQ(m_transform->PointPick(&point, &index, &in), DXTERR_UNINITIALIZED);
}

TEST_F(Mapping, PicksTheInputUnderThePoint)
{
    m_input->SetSample(2, 1, DXSAMPLE(200, 1, 2, 3));
    SetupQuietly();
    EXPECT_EQ(Pick(2, 1), S_OK);
    EXPECT_EQ(m_index, 0U);
    EXPECT_TRUE(m_point == CDXDVec(2, 1));
    EXPECT_EQ(m_input->openReadLocks, 0);
}

TEST_F(Mapping, PicksNothingBesideTheOutputOrWhereAllIsTransparent)
{
    SetupQuietly();
    EXPECT_EQ(Pick(4, 0), S_FALSE);
    EXPECT_EQ(Pick(-1, 0), S_FALSE);
    EXPECT_EQ(Pick(0, 0), S_FALSE); // a new surface is clear
    EXPECT_EQ(m_index, 99U);
}

TEST_F(Mapping, PicksTheOutputWhereNoInputHasASample)
{
    m_transform->determineBnds = [](CDXDBnds& bounds) {
        bounds = CDXDBnds(4, 3);
        return S_OK;
    };
    const auto small = FakeSurface::Make({.width = 2, .height = 2});
    small->Fill(DXSAMPLE(0xFFFFFFFFU));
    ASSERT_EQ(SetupWith({small}, m_output), S_OK);
    EXPECT_EQ(Pick(1, 1), S_OK);
    EXPECT_EQ(Pick(3, 2), DXT_S_HITOUTPUT);
    m_transform->m_ulNumInRequired = 0;
    ASSERT_EQ(SetupWith({}, m_output), S_OK);
    EXPECT_EQ(Pick(1, 1), DXT_S_HITOUTPUT);
}

TEST_F(Mapping, PicksTheInputWithTheLargestShareAndTheEarlierOfEquals)
{
    const auto lower = FakeSurface::Make();
    m_input->Fill(DXSAMPLE(100, 0, 0, 0));
    lower->Fill(DXSAMPLE(200, 0, 0, 0));
    SetupTwo(m_input, lower, 153, 102); // 15300 against 20400
    EXPECT_EQ(Pick(0, 0), S_OK);
    EXPECT_EQ(m_index, 1U);
    SetupTwo(m_input, lower, 200, 100);
    EXPECT_EQ(Pick(0, 0), S_OK);
    EXPECT_EQ(m_index, 0U);
    SetupTwo(m_input, lower, 0, 0);
    EXPECT_EQ(Pick(0, 0), S_FALSE);
}

TEST_F(Mapping, LeavesPickingToTheTransformThatWantsIt)
{
    SetupQuietly();
    m_transform->onSurfacePick = [](const CDXDBnds& point, ULONG& index, CDXDVec& in) {
        EXPECT_EQ(point.Left(), 3);
        EXPECT_EQ(point.Width(), 1);
        index = 5;
        in = CDXDVec(7, 8);
        return S_OK;
    };
    EXPECT_EQ(Pick(3, 2), S_OK);
    EXPECT_EQ(m_index, 5U);
    EXPECT_TRUE(m_point == CDXDVec(7, 8));
    m_transform->onSurfacePick = [](const CDXDBnds&, ULONG&, CDXDVec&) -> HRESULT { throw 1; };
    EXPECT_EQ(Pick(3, 2), E_UNEXPECTED);
}

TEST_F(Mapping, AnInputThatCannotBeLockedFailsThePick)
{
    SetupQuietly();
    m_input->FailCall("LockSurface", E_ABORT);
    EXPECT_EQ(Pick(0, 0), E_ABORT);
}

TEST_F(Mapping, AnOrderThatNamesTooMuchIsCutToWhatThereIs)
{
    m_input->Fill(DXSAMPLE(0xFFFFFFFFU));
    SetupQuietly();
    m_transform->pickOrder = [](ULONG& count, ULONG* indices, BYTE* weights) {
        count = 50;
        indices[0] = 7;
        weights[0] = 255;
    };
    EXPECT_EQ(Pick(0, 0), DXT_S_HITOUTPUT);
}

} // namespace
