#pragma once

#include "genapi/istring.h"
#include "genapi/registerof.h"

namespace GenApi {

/// Base of the text nodes. The three operations of each kind run under the map's lock.
class CStringBase : public CValueNode, public IString
{
public:
    using CValueNode::CValueNode;

    void SetValue(const gcstring& value, bool verify) override;
    gcstring GetValue(bool verify, bool ignoreCache) override;
    int64_t GetMaxLength() override;
    CStringBase* AsString() override { return this; }

    virtual gcstring ReadString(bool ignoreCache) = 0;
    /// The text fits and holds no zero byte.
    virtual void WriteString(const gcstring& value) = 0;
    virtual int64_t MaxLength() = 0;

protected:
    gcstring ReadText(bool verify, bool ignoreCache) override;
    void WriteText(const gcstring& text, bool verify) override;
};

/// String: a text of its own or another node's.
class CStringNode final : public CStringBase
{
public:
    using CStringBase::CStringBase;

    gcstring ReadString(bool ignoreCache) override;
    void WriteString(const gcstring& value) override;
    int64_t MaxLength() override;

    bool TakeElement(ElementReader& element) override;
    void Finish(ElementReader& own) override;

protected:
    EAccessMode BaseMode() const override { return source_ ? source_->Mode() : RW; }

private:
    std::optional<gcstring> own_;
    CStringBase* source_ = nullptr;
};

/// StringReg: a text that ends at the first zero byte or fills the register; a write fills up with zeros.
class CStringRegNode final : public CRegisterOf<CStringBase>
{
public:
    explicit CStringRegNode(NodeOrigin origin) : CRegisterOf(std::move(origin), WriteThrough) {}

    gcstring ReadString(bool ignoreCache) override;
    void WriteString(const gcstring& value) override;
    int64_t MaxLength() override { return Register().Length(); }

    void Finish(ElementReader& own) override;
};

}  // namespace GenApi
