#include "tools/glazelhost/media/memory_stream.h"

#include <gtest/gtest.h>

#include <string>

namespace GlazelHost
{

namespace
{

HRESULT SeekTo(CMemoryStream& stream, std::int64_t place, DWORD origin = STREAM_SEEK_SET)
{
    LARGE_INTEGER move{};
    move.QuadPart = place;
    return stream.Seek(move, origin, nullptr);
}

} // namespace

TEST(MemoryStream, WhatIsWrittenIsReadAgain)
{
    const auto stream = StreamOf();
    ULONG count = 0;
    EXPECT_EQ(stream->Write("hello", 5, &count), S_OK);
    EXPECT_EQ(count, 5U);
    EXPECT_EQ(SeekTo(*stream, 1), S_OK);
    char text[8] = {};
    EXPECT_EQ(stream->Read(text, sizeof text, &count), S_FALSE);
    EXPECT_EQ(std::string(text, count), "ello");
    EXPECT_EQ(stream->Read(text, 1, nullptr), S_FALSE);
}

TEST(MemoryStream, WritingBehindTheEndFillsTheGapWithZeros)
{
    const auto stream = StreamOf();
    EXPECT_EQ(SeekTo(*stream, 3), S_OK);
    char text[2] = {};
    ULONG count = 7;
    EXPECT_EQ(stream->Read(text, 1, &count), S_FALSE);
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(stream->Write("x", 1, nullptr), S_OK);
    EXPECT_EQ(stream->Bytes().size(), 4U);
    EXPECT_EQ(stream->Bytes()[0], std::byte{0});
}

TEST(MemoryStream, OverwritingKeepsWhatFollows)
{
    const auto stream = StreamOf();
    stream->Write("abcdef", 6, nullptr);
    SeekTo(*stream, -4, STREAM_SEEK_END);
    stream->Write("XY", 2, nullptr);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(stream->Bytes().data()), 6), "abXYef");
}

TEST(MemoryStream, SeekingBeforeTheBeginningOrFromNowhereChangesNothing)
{
    const auto stream = StreamOf();
    stream->Write("ab", 2, nullptr);
    EXPECT_EQ(SeekTo(*stream, -3, STREAM_SEEK_CUR), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(SeekTo(*stream, 0, 9), STG_E_INVALIDFUNCTION);
    ULARGE_INTEGER place{};
    EXPECT_EQ(stream->Seek({}, STREAM_SEEK_CUR, &place), S_OK);
    EXPECT_EQ(place.QuadPart, 2U);
}

TEST(MemoryStream, ASizeThatNoMemoryHoldsIsMediumFull)
{
    const auto stream = StreamOf();
    ULARGE_INTEGER size{};
    size.QuadPart = ~0ULL;
    EXPECT_EQ(stream->SetSize(size), STG_E_MEDIUMFULL);
    size.QuadPart = 3;
    EXPECT_EQ(stream->SetSize(size), S_OK);
    STATSTG facts{};
    EXPECT_EQ(stream->Stat(&facts, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(facts.cbSize.QuadPart, 3U);
    EXPECT_EQ(facts.pwcsName, nullptr);
}

TEST(MemoryStream, ItIsAStreamAndNothingElse)
{
    const auto stream = StreamOf();
    CComPtr<ISequentialStream> sequential;
    EXPECT_EQ(stream->QueryInterface(IID_ISequentialStream, reinterpret_cast<void**>(&sequential)),
              S_OK);
    void* other = &other;
    EXPECT_EQ(stream->QueryInterface(IID_IStorage, &other), E_NOINTERFACE);
    EXPECT_EQ(other, nullptr);
    EXPECT_EQ(stream->QueryInterface(IID_IStream, nullptr), E_POINTER);
}

} // namespace GlazelHost
