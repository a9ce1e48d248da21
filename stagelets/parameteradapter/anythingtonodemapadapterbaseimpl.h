#pragma once

#include <map>

#include "parameteradapter/anythingtonodemapadapterbase.h"
#include "parameteradapter/basicnodemapport.h"

namespace AnythingToNodeMapAdapter {

/// The collected parameters, by key, and the text of all of them.
class CAnythingToNodeMapAdapterBase::CAnythingToNodeMapAdapterBaseImpl
{
public:
    /// Ascending by byte order of the key: the order of the text and of the addresses.
    using Ports = std::map<GenICam::gcstring, std::shared_ptr<Detail::CBasicNodeMapPort>>;

    virtual ~CAnythingToNodeMapAdapterBaseImpl() = default;

    template <typename NodeMapPort, typename Parameter>
    void addParameter(const std::shared_ptr<Parameter>& parameter, std::int32_t mergePriority)
    {
        if (!parameter) return;
        const GenICam::gcstring key = parameter->getName();
        releaseKey(key);
        ports[key] = std::make_shared<NodeMapPort>(parameter, mergePriority);
    }

    /// Takes what stands under the key off its connector and its parameter, so that it can be replaced.
    void releaseKey(const GenICam::gcstring& key);

    /// The description, with every object placed as it is described.
    GenICam::gcstring placeAndDescribe(const GenICam::gcstring& portName, const GenICam::gcstring& prefix);
    /// The same text without placing anything.
    GenICam::gcstring describe(const GenICam::gcstring& portName, const GenICam::gcstring& prefix) const;

    Ports ports;
};

}  // namespace AnythingToNodeMapAdapter
