#include "tests/effect/effect_fixture.h"

#include <ole2.h>

namespace
{

constexpr DWORD kReadWrite = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

// Structured storage in a file of its own, removed at the end.
class DiskStorage
{
public:
    DiskStorage()
    {
        WCHAR folder[MAX_PATH];
        WCHAR file[MAX_PATH];
        ::GetTempPathW(MAX_PATH, folder);
        ::GetTempFileNameW(folder, L"glz", 0, file);
        path = file;
        EXPECT_EQ(::StgCreateDocfile(path.c_str(), kReadWrite | STGM_CREATE, 0, &storage), S_OK);
    }
    ~DiskStorage()
    {
        storage.Release();
        ::DeleteFileW(path.c_str());
    }
    DiskStorage(const DiskStorage&) = delete;
    DiskStorage& operator=(const DiskStorage&) = delete;

    // Closes the file and opens it again to read.
    void Reopen()
    {
        EXPECT_EQ(storage->Commit(STGC_DEFAULT), S_OK);
        storage.Release();
        EXPECT_EQ(::StgOpenStorage(path.c_str(), nullptr, STGM_READ | STGM_SHARE_DENY_WRITE,
                                   nullptr, 0, &storage),
                  S_OK);
    }

    std::wstring path;
    CComPtr<IStorage> storage;
};

Bytes Contents(IStorage* storage)
{
    CComPtr<IStream> stream;
    EXPECT_EQ(
        storage->OpenStream(L"Contents", nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &stream),
        S_OK);
    STATSTG statistics{};
    EXPECT_EQ(stream->Stat(&statistics, STATFLAG_NONAME), S_OK);
    Bytes bytes(statistics.cbSize.LowPart);
    EXPECT_EQ(stream->Read(bytes.data(), statistics.cbSize.LowPart, nullptr), S_OK);
    return bytes;
}

class Storage : public EffectTest
{
protected:
    IPersistStorage& Persist() { return *effect; }
};

} // namespace

TEST_F(Storage, SavesTheRecordAsTheContentsStreamOnDiskAndLoadsItBack)
{
    Fill(effect->m_current, RecordBytes(7, 0, 131072));
    effect->m_current.GetFlag();
    DiskStorage disk;
    EXPECT_EQ(Persist().Save(disk.storage, TRUE), S_OK);
    EXPECT_EQ(Persist().SaveCompleted(nullptr), S_OK);
    disk.Reopen();
    EXPECT_EQ(Contents(disk.storage), RecordBytes(7, 0, 131072));

    Fill(effect->m_current, RecordBytes(1));
    effect->m_current.GetFlag();
    EXPECT_EQ(Persist().Load(disk.storage), S_OK);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7, 0, 131072));
    EXPECT_EQ(effect->m_current.flag, 0U);
}

TEST_F(Storage, SavesAndLoadsInMemory)
{
    CComPtr<ILockBytes> memory;
    ASSERT_EQ(::CreateILockBytesOnHGlobal(nullptr, TRUE, &memory), S_OK);
    CComPtr<IStorage> storage;
    ASSERT_EQ(::StgCreateDocfileOnILockBytes(memory, kReadWrite | STGM_CREATE, 0, &storage), S_OK);
    Fill(effect->m_current, RecordBytes(7));
    EXPECT_EQ(Persist().Save(storage, FALSE), S_OK);
    EXPECT_EQ(Persist().IsDirty(), S_OK) << "not the storage that it was loaded from";
    Fill(effect->m_current, RecordBytes(1));
    EXPECT_EQ(Persist().Load(storage), S_OK);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7));
}

TEST_F(Storage, SavingAgainReplacesTheStream)
{
    DiskStorage disk;
    Fill(effect->m_current, RecordBytes(7, 1, 5000));
    EXPECT_EQ(Persist().Save(disk.storage, TRUE), S_OK);
    Fill(effect->m_current, RecordBytes(8, 1, 60));
    EXPECT_EQ(Persist().Save(disk.storage, TRUE), S_OK);
    EXPECT_EQ(Persist().IsDirty(), S_FALSE);
    EXPECT_EQ(Contents(disk.storage), RecordBytes(8, 1, 60));
}

TEST_F(Storage, ARecordBeyondTheLimitSavesAnEmptyStreamThatLoadsWithoutChange)
{
    DiskStorage disk;
    Fill(effect->m_current, RecordBytes(7, 1, 131073));
    EXPECT_EQ(Persist().Save(disk.storage, TRUE), S_OK);
    EXPECT_TRUE(Contents(disk.storage).empty());
    EXPECT_EQ(Persist().Load(disk.storage), S_OK);
    EXPECT_EQ(effect->m_current.size, 131073U);
}

TEST_F(Storage, LoadingWithoutTheStreamGivesTheStoragesOwnError)
{
    DiskStorage disk;
    Fill(effect->m_current, RecordBytes(7));
    EXPECT_EQ(Persist().Load(disk.storage), STG_E_FILENOTFOUND);
    EXPECT_EQ(BytesOf(effect->m_current), RecordBytes(7));
    EXPECT_EQ(Persist().IsDirty(), S_FALSE);
}

TEST_F(Storage, NullStoragesAreRefusedWhereAStorageIsUsed)
{
    EXPECT_EQ(Persist().Load(nullptr), E_INVALIDARG);
    EXPECT_EQ(Persist().Save(nullptr, TRUE), E_INVALIDARG);
    EXPECT_EQ(Persist().HandsOffStorage(), S_OK);
    EXPECT_EQ(Persist().InitNew(nullptr), S_OK);
    EXPECT_EQ(Persist().IsDirty(), S_OK);
}
