// Any bytes as a formula, in each place a formula may stand: what is accepted must have a result or a failure of
// the GenICam family, and limits, values and writes of its node must end.
#include <cstdint>
#include <string>

#include "gcbase/exception.h"
#include "genapi/genapi.h"

namespace {

using namespace GenApi;

void attempt(const auto& action)
{
    try {
        action();
    } catch (const GenICam::GenericException&) {
        // A refusal is what the caller asked for.
    }
}

// As the text of an XML element; what no XML may contain becomes a blank.
std::string escaped(const uint8_t* data, std::size_t size)
{
    std::string text;
    for (std::size_t i = 0; i < size; ++i) {
        const auto character = static_cast<char>(data[i]);
        if (character == '<') {
            text += "&lt;";
        } else if (character == '&') {
            text += "&amp;";
        } else {
            text += character >= ' ' && character <= '~' ? character : ' ';
        }
    }
    return text;
}

void evaluate(const std::string& kind, const std::string& formulas)
{
    const std::string text =
        R"(<RegisterDescription><Integer Name="A"><Value>7</Value></Integer>
           <Integer Name="B"><Value>-3</Value><Min>-10</Min><Max>0x7FFFFFFFFFFFFFFE</Max></Integer>
           <Float Name="F"><Value>2.5</Value><Min>0</Min></Float><)" +
        kind +
        R"( Name="N"><pVariable Name="A">A</pVariable><pVariable Name="B">B</pVariable><pVariable Name="F">F</pVariable>
           <pVariable Name="OLD">B</pVariable><Constant Name="C">0.25</Constant><Expression Name="X">A * F</Expression>)" +
        formulas + "</" + kind + "></RegisterDescription>";
    const NodeMapPtr map = CNodeMapFactory(ContentType_Xml, text.data(), text.size()).CreateNodeMap();
    INode& node = *map->GetNode("N");
    node.GetAccessMode();
    attempt([&] { dynamic_cast<IValue&>(node).ToString(); });
    attempt([&] { dynamic_cast<IValue&>(node).FromString("3"); });
    attempt([&] { dynamic_cast<IValue&>(node).FromString("0", false); });
    if (auto* number = dynamic_cast<IFloat*>(&node)) attempt([&] { number->GetInc(); });
    if (auto* number = dynamic_cast<IInteger*>(&node)) attempt([&] { number->GetInc(); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    const std::string text = escaped(data, size);
    const std::string formula = "<Formula>" + text + "</Formula>";
    const std::string both = "<FormulaTo>" + text + "</FormulaTo><FormulaFrom>" + text + "</FormulaFrom>";
    const std::string from = "<FormulaTo>FROM</FormulaTo><FormulaFrom>" + text + "</FormulaFrom>";
    const std::string to = "<FormulaTo>" + text + "</FormulaTo><FormulaFrom>TO</FormulaFrom>";
    for (const char* kind : {"SwissKnife", "IntSwissKnife"})
        attempt([&] { evaluate(kind, formula); });
    for (const char* kind : {"Converter", "IntConverter"})
        for (const std::string* formulas : {&both, &from, &to})
            attempt([&] { evaluate(kind, *formulas + "<IsLinear>Yes</IsLinear><pValue>B</pValue>"); });
    return 0;
}
