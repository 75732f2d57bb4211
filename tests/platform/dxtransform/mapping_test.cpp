// Where bounds and points lie on the other side.
#include "tests/platform/dxtransform/open_transform.h"

#include <array>

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

TEST_F(Mapping, OfInputsThatTellNoLayerIsInTheLayerOfAnImage)
{
    const auto flat = FakeSurface::Make({.width = 5, .height = 2, .tellsLayer = false});
    ASSERT_EQ(SetupWith({flat}, m_output), S_OK);
    DXBNDS out{};
    EXPECT_EQ(m_transform->MapBoundsIn2Out(nullptr, 0, 0, &out), S_OK);
    EXPECT_TRUE(CDXDBnds(out) == CDXDBnds(5, 2));
    flat->Fill(DXSAMPLE(0xFFFFFFFFU));
    EXPECT_EQ(Pick(1, 1), S_OK);
}

TEST_F(Mapping, WithoutInputsStartsFromTheOutput)
{
    m_transform->m_ulNumInRequired = 0;
    ASSERT_EQ(SetupWith({}, m_output), S_OK);
    DXBNDS out{};
    EXPECT_EQ(m_transform->MapBoundsIn2Out(nullptr, 0, 0, &out), S_OK);
    EXPECT_TRUE(CDXDBnds(out) == CDXDBnds(4, 3));
}

TEST_F(Mapping, OfGivenBoundsNeedsNoSetup)
{
    m_transform->m_ulMaxInputs = 2;
    const DXBNDS tall{DXBT_CONTINUOUS, {.C = {{0.0F, 1.0F}, {0.0F, 7.0F}, {}, {}}}};
    const std::array<DXBNDS, 2> in{CDXDBnds(2, 2), tall};
    DXBNDS out{};
    EXPECT_EQ(m_transform->MapBoundsIn2Out(in.data(), 2, 0, &out), S_OK);
    EXPECT_TRUE(CDXDBnds(out) == CDXDBnds(2, 7));
}

TEST_F(Mapping, ToTheOutputChecksItsArguments)
{
    const CDXDBnds in(1, 1);
    DXBNDS out = CDXDBnds(5, 5);
    EXPECT_EQ(m_transform->MapBoundsIn2Out(&in, 1, 0, nullptr), E_POINTER);
    EXPECT_EQ(m_transform->MapBoundsIn2Out(&in, 1, 1, &out), E_INVALIDARG);
    EXPECT_EQ(m_transform->MapBoundsIn2Out(&in, 2, 0, &out), E_INVALIDARG);
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

TEST_F(Mapping, PicksTheOutputWhereTheFirstInputHasNoSample)
{
    m_transform->m_ulMaxInputs = 2;
    const auto small = FakeSurface::Make({.width = 2, .height = 2});
    small->Fill(DXSAMPLE(0xFFFFFFFFU));
    ASSERT_EQ(SetupWith({small, m_input}, m_output), S_OK);
    EXPECT_EQ(Pick(1, 1), S_OK);
    EXPECT_EQ(Pick(3, 2), DXT_S_HITOUTPUT);
    m_transform->m_ulNumInRequired = 0;
    ASSERT_EQ(SetupWith({}, m_output), S_OK);
    EXPECT_EQ(Pick(1, 1), DXT_S_HITOUTPUT);
}

TEST_F(Mapping, AnInputThatCannotBeLockedFailsThePick)
{
    SetupQuietly();
    m_input->FailCall("LockSurface", E_ABORT);
    EXPECT_EQ(Pick(0, 0), E_ABORT);
}

} // namespace
