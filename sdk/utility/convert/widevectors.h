#pragma once

namespace Nivex::Pixels {

namespace Detail {

template <auto function>
struct Wide;

template <typename Result, typename... Arguments, Result (*function)(Arguments...)>
struct Wide<function>
{
#if defined(__x86_64__)
    [[gnu::target("avx2"), gnu::flatten]] static Result callForAvx2(Arguments... arguments)
    {
        return function(arguments...);
    }

    static Result call(Arguments... arguments)
    {
        static const bool hasAvx2 = __builtin_cpu_supports("avx2");
        return hasAvx2 ? callForAvx2(arguments...) : function(arguments...);
    }
#else
    static Result call(Arguments... arguments)
    {
        return function(arguments...);
    }
#endif
};

}  // namespace Detail

/// A row function that the compiler makes vector code of, with the same results: on processors that have AVX2 it
/// is one compiled for that, everything that it calls inline, else the one for all processors.
template <auto function>
constexpr auto wide = Detail::Wide<function>::call;

}  // namespace Nivex::Pixels
