// Commands, conditions and bound messages as they travel between a core and its drivers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "platform/AutoCom.h"
#include "platform/Xml.h"

struct CmdParam {
    std::string name;
    std::string type; // "INT", "STRING" or "BOOLEAN"
    std::string value;
};

// A named command or event with named, typed parameters.
class ICmdMessage : public kv::IRefCounted {
public:
    virtual const std::string& GetName() const = 0;
    virtual bool HasParam(const std::string& name) const = 0;
    // The parameter's text; "" when absent.
    virtual std::string GetParam(const std::string& name) const = 0;
    // The parameter's text as a number (kv::ToULong); 0 when absent or empty.
    virtual std::uint32_t GetNumber(const std::string& name) const = 0;
    // A parameter that is there already is overwritten in its place.
    virtual void AddParam(const std::string& name, const std::string& type, const std::string& value) = 0;
    virtual std::size_t GetParamCount() const = 0;
    virtual const CmdParam& GetParamAt(std::size_t index) const = 0;
};

// Takes a command's answer. Used only during the call it was handed to.
class ICmdReturn {
public:
    virtual void SetValue(const std::string& text) = 0;

protected:
    ~ICmdReturn() = default;
};

// A return that keeps the last text it was given.
class CR_String final : public ICmdReturn {
public:
    void SetValue(const std::string& text) override { m_text = text; }
    const std::string& GetText() const { return m_text; }

private:
    std::string m_text;
};

// A question asked of a driver by name. Used only during the call it was handed to.
class ICondMessage {
public:
    virtual const std::string& GetName() const = 0;
    virtual std::string GetParam(const std::string& name) const = 0;

protected:
    ~ICondMessage() = default;
};

// A message that arrives over a binding.
class IBindMessage {
public:
    // "PROTOCOL_COMMAND" when the message carries a command in GetXml().
    virtual const std::string& GetMessageType() const = 0;
    virtual const std::string& GetName() const = 0;
    virtual const std::string& GetData() const = 0;
    // "" when absent.
    virtual std::string GetParam(const std::string& name) const = 0;
    // The command of a "PROTOCOL_COMMAND", owned by the message; null otherwise.
    virtual KVXML::INode* GetXml() const = 0;

protected:
    ~IBindMessage() = default;
};

// A message that a driver sends over a binding.
class IOutboundBindMessage : public kv::IRefCounted {
public:
    virtual std::uint32_t GetKind() const = 0;
    virtual const std::string& GetName() const = 0;
    virtual const std::string& GetData() const = 0;
};

namespace kv {

auto_com<ICmdMessage> CreateCmdMessage(const std::string& name);

// <command name="..."><param name="..." type="...">value</param>...</command>
auto_com<KVXML::INode> CmdMessageToXml(const ICmdMessage& message);
// More parameters can only come from a damaged command.
inline constexpr std::size_t kMaxCommandParams = 1024;

// Null when the element is not a command: another name, no command name, or too many parameters.
auto_com<ICmdMessage> CmdMessageFromXml(const KVXML::INode& element);

auto_com<IOutboundBindMessage> CreateOutboundBindMessage(std::uint32_t kind, const std::string& name,
                                                         const std::string& data);

// A condition for cores to ask with; `params`, never null, supplies its name and parameters.
class CondMessage final : public ICondMessage {
public:
    explicit CondMessage(auto_com<ICmdMessage> params) : m_params(std::move(params)) {}
    const std::string& GetName() const override { return m_params->GetName(); }
    std::string GetParam(const std::string& name) const override { return m_params->GetParam(name); }

private:
    auto_com<ICmdMessage> m_params;
};

// A bound message for cores to deliver; `params`, never null, supplies its name and parameters.
class BindMessage final : public IBindMessage {
public:
    BindMessage(std::string messageType, auto_com<ICmdMessage> params, std::string data,
                auto_com<KVXML::INode> xml = nullptr)
        : m_messageType(std::move(messageType)),
          m_params(std::move(params)),
          m_data(std::move(data)),
          m_xml(std::move(xml)) {}

    const std::string& GetMessageType() const override { return m_messageType; }
    const std::string& GetName() const override { return m_params->GetName(); }
    const std::string& GetData() const override { return m_data; }
    std::string GetParam(const std::string& name) const override { return m_params->GetParam(name); }
    KVXML::INode* GetXml() const override { return m_xml.get(); }

private:
    std::string m_messageType;
    auto_com<ICmdMessage> m_params;
    std::string m_data;
    auto_com<KVXML::INode> m_xml;
};

} // namespace kv
