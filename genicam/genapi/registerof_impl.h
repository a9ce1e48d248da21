#pragma once

#include "gcbase/exception.h"
#include "genapi/nodemap_impl.h"
#include "genapi/registerof.h"

namespace GenApi {

template <typename Base>
void CRegisterOf<Base>::Set(const uint8_t* buffer, int64_t length, bool verify)
{
    this->Map().Operate([&] {
        if (verify) this->RequireWritable();
        CheckLength(length);
        register_.Write({buffer, static_cast<std::size_t>(length)});
    });
}

template <typename Base>
void CRegisterOf<Base>::Get(uint8_t* buffer, int64_t length, bool /*verify*/, bool ignoreCache)
{
    this->Map().Operate([&] {
        this->RequireReadable();
        CheckLength(length);
        register_.Read({buffer, static_cast<std::size_t>(length)}, ignoreCache);
    });
}

template <typename Base>
int64_t CRegisterOf<Base>::GetLength()
{
    return this->Map().Operate([&] { return register_.Length(); });
}

template <typename Base>
int64_t CRegisterOf<Base>::GetAddress()
{
    return this->Map().Operate([&] { return register_.Address(); });
}

template <typename Base>
bool CRegisterOf<Base>::TakeElement(ElementReader& element)
{
    return register_.TakeElement(element) || Base::TakeElement(element);
}

template <typename Base>
void CRegisterOf<Base>::FinishRegister(ElementReader& own, int64_t shortest, int64_t longest)
{
    Base::Finish(own);
    register_.Finish(own, shortest, longest);
    this->LimitCaching(register_.Caching());
}

template <typename Base>
void CRegisterOf<Base>::CheckLength(int64_t length) const
{
    const int64_t expected = register_.Length();
    if (length != expected)
        GENICAM_THROW(InvalidArgumentException, "Node \"%s\": %lld bytes were given for a register of %lld.",
                      this->Name().c_str(), static_cast<long long>(length), static_cast<long long>(expected));
}

}  // namespace GenApi
