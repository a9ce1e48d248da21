#pragma once

#include "genapi/registerof.h"

namespace GenApi {

/// Register: bytes without further meaning.
class CRegisterNode final : public CRegisterOf<CValueNode>
{
public:
    explicit CRegisterNode(NodeOrigin origin) : CRegisterOf(std::move(origin), WriteThrough) {}

    void Finish(ElementReader& own) override;

protected:
    gcstring ReadText(bool verify, bool ignoreCache) override;
    void WriteText(const gcstring& text, bool verify) override;
};

}  // namespace GenApi
