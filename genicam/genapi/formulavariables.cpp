#include "genapi/formulavariables.h"

#include <algorithm>

#include "gcbase/exception.h"
#include "genapi/enumerationnode.h"
#include "genapi/nodemap.h"
#include "genapi/textconversion.h"

namespace GenApi {

namespace {

constexpr std::size_t boundVariable = SIZE_MAX;
// Of a formula's, those that cost as much as one node's evaluation.
constexpr std::size_t instructionsOfStep = 64;

std::string_view suffixOf(std::string_view name)
{
    const std::size_t dot = name.find('.');
    return dot == std::string_view::npos ? std::string_view() : name.substr(dot + 1);
}

FormulaNumber ofKind(FormulaNumber number, FormulaKind kind)
{
    return kind == FormulaKind::Integer ? FormulaNumber(number.AsInteger()) : number;
}

}  // namespace

FormulaNumber NaturalValue(INumber& number, FormulaKind kind, bool ignoreCache)
{
    if (kind == FormulaKind::Integer) return number.ReadTruncated(ignoreCache);
    if (number.IsIntegral()) return number.ReadInteger(ignoreCache);
    return number.ReadFloat(ignoreCache);
}

FormulaVariable::FormulaVariable(const ElementReader& element, std::string_view suffix)
{
    static constexpr Word<Meaning> meanings[] = {{"", Meaning::Value},
                                                 {"Value", Meaning::Value},
                                                 {"Min", Meaning::Min},
                                                 {"Max", Meaning::Max},
                                                 {"Inc", Meaning::Inc},
                                                 {"AccessMode", Meaning::AccessMode},
                                                 {"Visibility", Meaning::Visibility},
                                                 {"CachingMode", Meaning::CachingMode}};
    static constexpr std::string_view entryPrefix = "Entry.";
    if (suffix.substr(0, entryPrefix.size()) == entryPrefix) {
        CEnumerationNode& enumeration = element.Enumeration(Link::Hint);
        const gcstring symbolic(suffix.substr(entryPrefix.size()));
        meaning_ = Meaning::Entry;
        node_ = &enumeration;
        entry_ = dynamic_cast<CEnumEntryNode*>(enumeration.GetEntryByName(symbolic));
        if (!entry_) element.Refuse("the enumeration has no entry \"" + symbolic.str() + "\"");
        return;
    }
    const auto* word = std::find_if(std::begin(meanings), std::end(meanings),
                                    [&](const Word<Meaning>& each) { return each.text == suffix; });
    if (word == std::end(meanings))
        element.Refuse("the variable's name ends in \"." + std::string(suffix) + "\", which means nothing");
    meaning_ = word->value;
    if (meaning_ == Meaning::Visibility || meaning_ == Meaning::CachingMode) {
        node_ = &element.Node(Link::Hint);
    } else if (meaning_ == Meaning::AccessMode) {
        node_ = &element.Node(Link::VariableMode);
    } else {
        number_ = element.Number(meaning_ == Meaning::Value ? Link::Variable : Link::VariableLimit);
        node_ = &number_.Node();
    }
}

FormulaNumber FormulaVariable::Read(FormulaKind kind, bool ignoreCache) const
{
    using Number = FormulaNumber;
    switch (meaning_) {
        case Meaning::Value:
            return NaturalValue(*number_.operator->(), kind, ignoreCache);
        case Meaning::Min:
            return Limit([](INumber& n) -> Number { return n.MinInteger(); },
                         [](INumber& n) -> Number { return n.MinFloat(); }, kind);
        case Meaning::Max:
            return Limit([](INumber& n) -> Number { return n.MaxInteger(); },
                         [](INumber& n) -> Number { return n.MaxFloat(); }, kind);
        case Meaning::Inc:
            if (!number_->IsIntegral() && !number_->IncFloat())
                throw FormulaFault{"\"" + node_->Name().str() + "\" has no increment"};
            return Limit([](INumber& n) -> Number { return n.IncInteger(); },
                         [](INumber& n) -> Number { return n.IncFloat().value_or(0); }, kind);
        case Meaning::AccessMode:
            return static_cast<int64_t>(node_->Mode());
        case Meaning::Visibility:
            return static_cast<int64_t>(node_->GetVisibility());
        case Meaning::CachingMode:
            return static_cast<int64_t>(node_->GetCachingMode());
        case Meaning::Entry:
            return entry_->Value();
    }
    return {};
}

FormulaNumber FormulaVariable::Limit(FormulaNumber (*ofIntegers)(INumber&), FormulaNumber (*ofFloats)(INumber&),
                                     FormulaKind kind) const
{
    INumber& number = *number_.operator->();
    return number.IsIntegral() ? ofIntegers(number) : ofKind(ofFloats(number), kind);
}

bool FormulaVariable::IsReadable() const
{
    if (!number_) return true;
    // A node's limits have a meaning even while its value cannot be read.
    const EAccessMode mode = node_->Mode();
    return meaning_ == Meaning::Value ? GenApi::IsReadable(mode) : IsAvailable(mode);
}

/// Finds names for one formula. Expressions are compiled when they are met, and kept for the next mention.
class FormulaVariables::Compilation final : public FormulaSymbols
{
public:
    Compilation(FormulaVariables& variables, std::string_view bound) : variables_(variables), bound_(bound) {}

    Formula Compile(std::string_view text) { return FormulaCompiler(text, variables_.kind_, *this).Compile(); }

    FormulaSymbol FindSymbol(std::string_view name) override
    {
        if (!bound_.empty() && name == bound_) return VariableSymbol{boundVariable};
        if (const auto variable = variables_.FindVariable(name)) return VariableSymbol{*variable};
        if (const auto found = variables_.constants_.find(name); found != variables_.constants_.end())
            return found->second;
        const auto found = variables_.expressions_.find(name);
        if (found == variables_.expressions_.end() || found->second.index >= known_) return {};
        return &FormulaOf(found->second);
    }

private:
    static constexpr int maxNesting = 32;

    const Formula& FormulaOf(const Expression& expression)
    {
        const auto kept = formulas_.find(expression.index);
        if (kept != formulas_.end()) return kept->second;
        if (nesting_ == maxNesting)
            throw FormulaFault{GenICam::formatText("more than %d expressions mention each other", maxNesting)};
        const std::size_t outerKnown = std::exchange(known_, expression.index);
        ++nesting_;
        Formula formula = Compile(expression.text);
        --nesting_;
        known_ = outerKnown;
        return formulas_.emplace(expression.index, std::move(formula)).first->second;
    }

    FormulaVariables& variables_;
    std::string_view bound_;
    std::size_t known_ = SIZE_MAX;  // expressions before this one may be mentioned
    int nesting_ = 0;
    std::map<std::size_t, Formula> formulas_;
};

class FormulaVariables::Reader final : public VariableReader
{
public:
    Reader(const FormulaVariables& variables, FormulaNumber bound, Reading reading)
        : variables_(variables), bound_(bound), reading_(reading)
    {}

    FormulaNumber ReadVariable(std::size_t index) override
    {
        if (index == boundVariable) return ofKind(bound_, variables_.kind_);
        const FormulaVariable& variable = variables_.variables_[index];
        const bool fresh = reading_.ignoreCache || &variable.Node() == reading_.fresh;
        return variable.Read(variables_.kind_, fresh);
    }

private:
    const FormulaVariables& variables_;
    FormulaNumber bound_;
    Reading reading_;
};

bool FormulaVariables::TakeElement(ElementReader& element)
{
    if (element.Is("pVariable")) {
        Declare(NameOf(element), element);
    } else if (element.Is("Constant")) {
        const auto integer = ParseInteger(element.Text());
        constants_.emplace(NameOf(element), integer ? FormulaNumber(*integer) : FormulaNumber(element.Float()));
    } else if (element.Is("Expression")) {
        expressions_.emplace(NameOf(element), Expression{expressions_.size(), element.Text()});
    } else {
        return false;
    }
    return true;
}

std::string FormulaVariables::NameOf(const ElementReader& element) const
{
    const std::string_view name = element.Attribute("Name");
    if (name.empty()) element.Refuse("it has no name");
    return std::string(name);
}

std::size_t FormulaVariables::Declare(std::string name, const ElementReader& element)
{
    variables_.emplace_back(element, suffixOf(name));
    variableElements_.push_back(element);
    return variableNames_.emplace(std::move(name), variables_.size() - 1).first->second;
}

// The declared name, or a declared one with a further suffix.
std::optional<std::size_t> FormulaVariables::FindVariable(std::string_view name)
{
    const auto found = variableNames_.find(name);
    if (found != variableNames_.end()) return found->second;
    const auto whole = variableNames_.find(name.substr(0, name.find('.')));
    if (whole == variableNames_.end()) return std::nullopt;
    return Declare(std::string(name), ElementReader(variableElements_[whole->second]));
}

Formula FormulaVariables::Compile(const ElementReader& element, std::string_view bound)
{
    try {
        return Compilation(*this, bound).Compile(element.Text());
    } catch (const FormulaFault& fault) {
        element.Refuse(fault.cause);
    }
}

void FormulaVariables::EndCompilation()
{
    variableElements_.clear();
    variableNames_.clear();
    constants_.clear();
    expressions_.clear();
}

FormulaNumber FormulaVariables::Evaluate(const Formula& formula, FormulaNumber bound, Reading reading) const
{
    try {
        return Run(formula, bound, reading);
    } catch (const FormulaFault& fault) {
        GENICAM_THROW(RuntimeException, "Node \"%s\": its formula has no result: %s.", owner_.Name().c_str(),
                      fault.cause.c_str());
    }
}

std::optional<FormulaNumber> FormulaVariables::TryEvaluate(const Formula& formula, FormulaNumber bound) const
{
    try {
        return Run(formula, bound, {});
    } catch (const FormulaFault&) {
        return std::nullopt;
    }
}

FormulaNumber FormulaVariables::Run(const Formula& formula, FormulaNumber bound, Reading reading) const
{
    owner_.Map().CountStep(owner_, 1 + static_cast<int>(formula.Length() / instructionsOfStep));
    Reader reader(*this, bound, reading);
    return formula.Evaluate(reader);
}

bool FormulaVariables::IsFunctionOf(const Formula& formula, const CNodeBase& node) const
{
    const auto& mentioned = formula.Variables();
    const bool isBound = std::find(mentioned.begin(), mentioned.end(), boundVariable) != mentioned.end();
    return isBound && std::none_of(mentioned.begin(), mentioned.end(), [&](std::size_t index) {
               return index != boundVariable && &variables_[index].Node() == &node;
           });
}

bool FormulaVariables::AreAllReadable() const
{
    owner_.Map().CountStep(owner_, static_cast<int>(variables_.size() / instructionsOfStep));
    return std::all_of(variables_.begin(), variables_.end(),
                       [](const FormulaVariable& v) { return v.IsReadable(); });
}

bool FormulaVariables::AreReadable(const Formula& formula) const
{
    const auto& mentioned = formula.Variables();
    return std::all_of(mentioned.begin(), mentioned.end(), [this](std::size_t index) {
        return index == boundVariable || variables_[index].IsReadable();
    });
}

}  // namespace GenApi
