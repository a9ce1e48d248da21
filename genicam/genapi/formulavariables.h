#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "genapi/formulacompiler.h"
#include "genapi/nodebuilder.h"

namespace GenApi {

class CEnumEntryNode;

/// A number of a node as a formula of `kind` sees it: an integer stays one; a float is truncated for a formula of
/// integers.
FormulaNumber NaturalValue(INumber& number, FormulaKind kind, bool ignoreCache);

/// A variable: a node, and what of it is meant. Its name, where it is declared or where a formula mentions it,
/// says the latter: `Gain` and `Gain.Value`, `Gain.Min`, `Gain.Max`, `Gain.Inc`, `Gain.Entry.NAME`,
/// `Gain.AccessMode` (0 NI, 1 NA, 2 WO, 3 RO, 4 RW), `Gain.Visibility` (0 Beginner to 3 Invisible),
/// `Gain.CachingMode` (0 NoCache, 1 WriteAround, 2 WriteThrough).
class FormulaVariable
{
public:
    /// Refuses a `suffix` that says nothing, and nodes that it does not fit.
    FormulaVariable(const ElementReader& element, std::string_view suffix);

    FormulaNumber Read(FormulaKind kind, bool ignoreCache) const;
    bool IsReadable() const;
    const CNodeBase& Node() const { return *node_; }

private:
    enum class Meaning
    {
        Value,
        Min,
        Max,
        Inc,
        AccessMode,
        Visibility,
        CachingMode,
        Entry
    };

    FormulaNumber Limit(FormulaNumber (*ofIntegers)(INumber&), FormulaNumber (*ofFloats)(INumber&),
                        FormulaKind kind) const;

    Meaning meaning_ = Meaning::Value;
    CNodeBase* node_ = nullptr;
    NumberRef number_;
    const CEnumEntryNode* entry_ = nullptr;
};

/// What the formulas of one node may mention: its pVariable, Constant and Expression elements, and one name that
/// has a value only while a formula is evaluated. An Expression is compiled in the place where it is mentioned; it
/// may mention those before it.
class FormulaVariables
{
public:
    FormulaVariables(const CNodeBase& owner, FormulaKind kind) : owner_(owner), kind_(kind) {}

    bool TakeElement(ElementReader& element);
    /// Compiles the text of `element`, in which `bound` is the name given a value by Evaluate. To be called when
    /// all elements are taken.
    Formula Compile(const ElementReader& element, std::string_view bound = {});
    /// Lets go of the description, which ends after the node's Finish.
    void EndCompilation();

    FormulaKind Kind() const { return kind_; }
    /// How variables are read.
    struct Reading
    {
        bool ignoreCache = false;
        /// A node that is read past the cache in any case.
        const CNodeBase* fresh = nullptr;
    };
    /// RuntimeException with the node's name if the formula has no result.
    FormulaNumber Evaluate(const Formula& formula, FormulaNumber bound, Reading reading) const;
    /// The same, but nothing where the formula has no result.
    std::optional<FormulaNumber> TryEvaluate(const Formula& formula, FormulaNumber bound) const;
    /// True if the bound name is all that the formula takes from `node`: then its result for any number in place
    /// of the node's own can be told.
    bool IsFunctionOf(const Formula& formula, const CNodeBase& node) const;
    bool AreAllReadable() const;
    bool AreReadable(const Formula& formula) const;

private:
    class Compilation;
    class Reader;

    struct Expression
    {
        std::size_t index;
        std::string_view text;
    };

    FormulaNumber Run(const Formula& formula, FormulaNumber bound, Reading reading) const;
    std::string NameOf(const ElementReader& element) const;
    std::optional<std::size_t> FindVariable(std::string_view name);
    std::size_t Declare(std::string name, const ElementReader& element);

    const CNodeBase& owner_;
    const FormulaKind kind_;
    std::vector<FormulaVariable> variables_;
    // Until EndCompilation.
    std::vector<ElementReader> variableElements_;
    std::map<std::string, std::size_t, std::less<>> variableNames_;
    std::map<std::string, FormulaNumber, std::less<>> constants_;
    std::map<std::string, Expression, std::less<>> expressions_;
};

}  // namespace GenApi
