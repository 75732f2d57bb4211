// Interface pointers and critical sections.
#include "tests/doubles/deadline.h"
#include "tests/doubles/test_thread.h"
#include "tests/platform/atl/sample_objects.h"

#include <mutex>
#include <utility>

namespace
{

// Counts its references and lives on the test's stack.
class Counted : public ISecond
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override
    {
        const bool known = ::IsEqualIID(riid, IID_IUnknown) || ::IsEqualIID(riid, IID_ISecond);
        *ppv = known ? this : nullptr;
        references += known ? 1U : 0U;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        if (onRelease != nullptr)
        {
            EXPECT_EQ(*onRelease, nullptr);
        }
        return --references;
    }
    int STDMETHODCALLTYPE Second() override { return 2; }

    ULONG references = 0;
    ISecond** onRelease = nullptr; // must be null by then
};

TEST(InterfacePointer, HoldsOneReferenceForItsLife)
{
    Counted object;
    {
        const CComPtr<ISecond> pointer(&object);
        EXPECT_EQ(object.references, 1U);
        EXPECT_EQ(pointer->Second(), 2);
        EXPECT_FALSE(!pointer);
    }
    EXPECT_EQ(object.references, 0U);
}

TEST(InterfacePointer, CopiesCountAndMovesDoNot)
{
    Counted object;
    CComPtr<ISecond> first(&object);
    CComPtr<ISecond> second(first);
    EXPECT_EQ(object.references, 2U);
    const CComPtr<ISecond> third(std::move(second));
    EXPECT_EQ(object.references, 2U);
    EXPECT_EQ(second.p, nullptr); // NOLINT(bugprone-use-after-move): that is what is tested
    CComPtr<ISecond>& same = first;
    first = std::move(same);
    EXPECT_EQ(first.p, &object);
    EXPECT_EQ(object.references, 2U);
}

TEST(InterfacePointer, AssigningItselfKeepsTheObject)
{
    Counted object;
    CComPtr<ISecond> pointer(&object);
    const CComPtr<ISecond>& same = pointer;
    pointer = same;
    pointer = &object;
    EXPECT_EQ(object.references, 1U);
    pointer = nullptr;
    EXPECT_EQ(object.references, 0U);
}

TEST(InterfacePointer, IsNullBeforeTheOldReferenceGoes)
{
    Counted object;
    CComPtr<ISecond> pointer(&object);
    object.onRelease = &pointer.p;
    pointer.Release();
    EXPECT_EQ(object.references, 0U);
}

TEST(InterfacePointer, AttachesDetachesAndCopiesOut)
{
    Counted object;
    CComPtr<ISecond> pointer;
    object.AddRef();
    pointer.Attach(&object);
    EXPECT_EQ(object.references, 1U);
    ISecond* out = nullptr;
    EXPECT_EQ(pointer.CopyTo(&out), S_OK);
    EXPECT_EQ(object.references, 2U);
    EXPECT_EQ(pointer.CopyTo(nullptr), E_POINTER);
    out->Release();
    EXPECT_EQ(pointer.Detach(), &object);
    EXPECT_EQ(object.references, 1U);
}

TEST(InterfacePointer, QueriesForItsInterfaceOrIsNull)
{
    Counted object;
    const CComQIPtr<ISecond> found(static_cast<IUnknown*>(&object));
    EXPECT_EQ(found.p, &object);
    const CComQIPtr<IFirst> missing(static_cast<IUnknown*>(&object));
    EXPECT_EQ(missing.p, nullptr);
    CComPtr<ISecond> queried;
    EXPECT_EQ(found.QueryInterface(&queried.p), S_OK);
    EXPECT_EQ(object.references, 2U);
}

TEST(CriticalSection, IsRecursiveAndKeepsOtherThreadsOut)
{
    CComAutoCriticalSection section;
    const HANDLE entered = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    {
        std::unique_lock guard(section);
        EXPECT_EQ(section.Lock(), S_OK);
        EXPECT_EQ(section.Unlock(), S_OK);
        TestThread thread([&] {
            const std::lock_guard inside(section);
            ::SetEvent(entered);
        });
        EXPECT_EQ(::WaitForSingleObject(entered, 50), DWORD{WAIT_TIMEOUT});
        guard.unlock();
        EXPECT_TRUE(thread.Join(kDeadlineMs));
    }
    EXPECT_EQ(::WaitForSingleObject(entered, 0), DWORD{WAIT_OBJECT_0});
    ::CloseHandle(entered);
}

} // namespace
