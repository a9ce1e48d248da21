#pragma once

#include "genapi/icommand.h"
#include "genapi/nodebase.h"

namespace GenApi {

/// Command: writes its number on request, and is done when the device has put another in its place.
class CCommandNode final : public CValueNode, public ICommand
{
public:
    using CValueNode::CValueNode;

    void Execute(bool verify) override;
    bool IsDone(bool verify) override;

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;
    bool WantsPolling() override { return active_ && !Done(); }

protected:
    EAccessMode BaseMode() const override { return ModeOf(value_.Reference()); }
    gcstring ReadText(bool verify, bool ignoreCache) override;
    void WriteText(const gcstring& text, bool verify) override;

private:
    void Start();
    bool Done();

    IntegerSource value_;
    IntegerSource command_;
    bool active_ = false;  // from Execute until IsDone finds it done
};

}  // namespace GenApi
