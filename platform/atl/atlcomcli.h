// ATL's interface pointers. Stands in for the platform's atlcomcli.h; strings, variants and safe
// arrays are left out, and operator-> gives the plain interface instead of one that hides AddRef
// and Release. Objects may be anybody's: what their AddRef and Release throw ends here.
#pragma once

#include "platform/runtime/foreign_call.h"

#include <windows.h>

#include <objbase.h>
#include <unknwn.h>

#include <cassert>
#include <tuple>
#include <utility>

// Owns one reference to `p`, or nothing when `p` is null. Not thread-safe.
template <typename T>
class CComPtr
{
public:
    CComPtr() noexcept = default;
    CComPtr(std::nullptr_t) noexcept {}
    CComPtr(T* other) noexcept : p(other) // takes a reference of its own
    {
        if (p != nullptr && !TryForeign([this] { return p->AddRef(); }))
        {
            p = nullptr; // there is no reference to hold
        }
    }
    CComPtr(const CComPtr& other) noexcept : CComPtr(other.p) {}
    CComPtr(CComPtr&& other) noexcept : p(other.Detach()) {}
    ~CComPtr() { Release(); }

    CComPtr& operator=(T* other) noexcept
    {
        CComPtr(other).Swap(*this); // the old one goes last: its release may run foreign code
        return *this;
    }
    CComPtr& operator=(const CComPtr& other) noexcept // NOLINT(bugprone-unhandled-self-assignment):
                                                      // by copy and swap
    {
        return *this = other.p;
    }
    CComPtr& operator=(CComPtr&& other) noexcept
    {
        CComPtr(std::move(other)).Swap(*this);
        return *this;
    }

    operator T*() const noexcept { return p; }
    T& operator*() const noexcept { return *p; }
    T* operator->() const noexcept { return p; }
    bool operator!() const noexcept { return p == nullptr; }
    // For functions that hand out an interface. Holds nothing at the time.
    T** operator&() noexcept
    {
        assert(p == nullptr);
        return &p;
    }

    void Release() noexcept
    {
        T* const old = std::exchange(p, nullptr); // null first: the release may come back here
        if (old != nullptr)
        {
            TryForeign([old] { return old->Release(); });
        }
    }
    // Takes over the caller's reference.
    void Attach(T* other) noexcept
    {
        Release();
        p = other;
    }
    // Hands its reference to the caller.
    [[nodiscard]] T* Detach() noexcept { return std::exchange(p, nullptr); }

    // Hands out a further reference, or null. E_POINTER for a null place.
    HRESULT CopyTo(T** place) const noexcept
    {
        if (place == nullptr)
        {
            return E_POINTER;
        }
        *place = CComPtr(p).Detach();
        return S_OK;
    }
    template <typename Q>
    HRESULT QueryInterface(Q** place) const noexcept
    {
        return ForeignResult(
            [&] { return p->QueryInterface(__uuidof(Q), reinterpret_cast<void**>(place)); });
    }

    T* p = nullptr;

private:
    void Swap(CComPtr& other) noexcept { std::swap(p, other.p); }
};

// The same, made from any interface of an object by a query; null when the object has no T.
template <typename T, const IID* piid = &__uuidof(T)>
class CComQIPtr : public CComPtr<T>
{
public:
    CComQIPtr() noexcept = default;
    CComQIPtr(T* other) noexcept : CComPtr<T>(other) {}
    CComQIPtr(IUnknown* other) noexcept
    {
        if (other != nullptr)
        {
            // A failing query leaves null, which is the answer.
            TryForeign(
                [&] { return other->QueryInterface(*piid, reinterpret_cast<void**>(&this->p)); });
        }
    }
    CComQIPtr(const CComQIPtr& other) noexcept = default;
    CComQIPtr(CComQIPtr&& other) noexcept = default;
    CComQIPtr& operator=(const CComQIPtr& other) noexcept = default;
    CComQIPtr& operator=(CComQIPtr&& other) noexcept = default;
};
