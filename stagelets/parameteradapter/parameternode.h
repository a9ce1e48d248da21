#pragma once

#include <functional>
#include <memory>
#include <span>
#include <type_traits>
#include <vector>

#include "core/inodemapcontainer.h"
#include "core/ivalue.h"
#include "core/simplenode.h"
#include "parameteradapter/stageletnodemapbase.h"
#include "utils/log.h"

namespace Plugin::NivexStageletPackageBase {

/// A node of one step whose parameters are variables of its final class. It gives them ports, a node map, checks
/// and settings, and all outputs together an error.
///
/// The final class adds its parameters and outputs in its constructor, then calls buildNodeMap; its destructor
/// calls cleanup first, which ends the node map, so that the variables may be members. They are guarded by the
/// node's lock: `process` takes one copy of all with `copyOf`.
///
/// In settings each parameter stands under its own name, enumerations as numbers. loadSettings leaves alone what
/// the store lacks and changes nothing at all if it refuses one value. It and each write through a port notify
/// that the settings changed. Values that are not allowed raise InvalidArgumentException, settings without a store
/// too; settings of a node that isn't stopped raise RuntimeException.
class ParameterNode : public Nivex::DataProcessing::Core::SimpleNode,
                      public Nivex::DataProcessing::Core::INodeMapContainer
{
public:
    void loadSettings(const std::shared_ptr<Nivex::DataProcessing::Core::ISettings>& settings) override;
    void saveSettings(const std::shared_ptr<Nivex::DataProcessing::Core::ISettings>& settings) override;
    std::vector<Nivex::DataProcessing::Core::NodeMapInfo> getNodeMapInfos() override;
    GenApi::CNodeMapRef getNodeMap(const GenICam::gcstring& identifier) override;
    void cleanup() override;

protected:
    /// @param displayName of the node map and in the log
    ParameterNode(const std::shared_ptr<Nivex::DataProcessing::Core::IResourcePool>& pool,
                  const GenICam::gcstring& displayName, const char* logChannel);
    ~ParameterNode() override;

    /// @name Parameters, in the order in which users are to see them
    void addParameter(const PortTexts& texts, std::int64_t& variable, const IntegerRange& range,
                      const char* representation = "Linear", const char* unit = "");
    void addParameter(const PortTexts& texts, double& variable, const FloatRange& range,
                      const char* representation = "Linear", const char* unit = "");
    void addParameter(const PortTexts& texts, bool& variable);
    /// @param rows have to stay.
    template <typename E>
    void addParameter(const PortTexts& texts, E& variable,
                      std::type_identity_t<std::span<const EnumEntryRow<E>>> rows);
    void buildNodeMap();
    /// Where parameters of other kinds can be added, with ports of the final class's own.
    StageletNodeMapBase& nodeMap() { return *nodeMap_; }

    /// A copy of what the node's lock guards, such as a record with all parameters.
    template <typename T>
    T copyOf(const T& variables) const;

    /// Creates an output that outputErrors reaches.
    template <typename T>
    void addOutput(const GenICam::gcstring& name, const GenICam::gcstring& displayName,
                   Nivex::DataProcessing::Utils::ResettableProperty<T>& property);
    /// Gives up an execution: puts an InvalidValueError on all outputs, caused by the error of `input` if that is
    /// given and has one; writes a log entry; reports the loss.
    void outputErrors(const GenICam::gcstring& text, Nivex::DataProcessing::Core::LossCause cause,
                      const Nivex::DataProcessing::Core::IValue* input = nullptr);

private:
    using ErrorPtr = std::shared_ptr<Nivex::DataProcessing::Core::IError>;
    class IVariable;
    template <typename T>
    class Variable;
    struct Parameter
    {
        std::unique_ptr<IVariable> variable;
        std::function<void()> notifyObserver;
    };

    template <typename Port, typename T>
    void add(const std::shared_ptr<Port>& port, std::unique_ptr<Variable<T>> variable);
    void requireUsable(const std::shared_ptr<Nivex::DataProcessing::Core::ISettings>& settings) const;

    const GenICam::gcstring displayName_;
    const Nivex::DataProcessing::Utils::CatId channel_;
    std::vector<std::function<void(const ErrorPtr&)>> errorOutputs_;
    std::vector<Parameter> parameters_;
    std::unique_ptr<StageletNodeMapBase> nodeMap_;  ///< Null after cleanup.
};

}  // namespace Plugin::NivexStageletPackageBase

#include "parameteradapter/parameternode_impl.h"
