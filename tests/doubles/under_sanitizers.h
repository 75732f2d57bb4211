// Tests that go through all there is, in a release build. Under the sanitizers that takes minutes,
// and they see a wrong access or a wrong sum in a part of it as well.
#pragma once

#ifdef __has_feature
#if __has_feature(address_sanitizer)
#define GLAZEL_UNDER_SANITIZERS
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define GLAZEL_UNDER_SANITIZERS
#endif

// `sampled` under the sanitizers, otherwise `whole`: for steps and for counts of loops.
template <typename T>
constexpr T UnderSanitizers([[maybe_unused]] T sampled, [[maybe_unused]] T whole)
{
#ifdef GLAZEL_UNDER_SANITIZERS
    return sampled;
#else
    return whole;
#endif
}
