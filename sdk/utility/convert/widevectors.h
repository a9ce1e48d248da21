#pragma once

namespace Nivex::Pixels {

#if defined(__x86_64__)

namespace Detail {

template <auto function, typename... Arguments>
[[gnu::target("avx2"), gnu::flatten]] void callForAvx2(Arguments... arguments)
{
    function(arguments...);
}

}  // namespace Detail

/// Calls a row function that the compiler makes vector code of: one compiled for AVX2 on processors that have it,
/// else the one for all processors. Both give the same.
template <auto function, typename... Arguments>
void callWide(Arguments... arguments)
{
    static const bool hasAvx2 = __builtin_cpu_supports("avx2");
    if (hasAvx2) {
        Detail::callForAvx2<function>(arguments...);
    } else {
        function(arguments...);
    }
}

#else

template <auto function, typename... Arguments>
void callWide(Arguments... arguments)
{
    function(arguments...);
}

#endif

}  // namespace Nivex::Pixels
