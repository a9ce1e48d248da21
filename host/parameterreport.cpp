#include "parameterreport.h"

#include <algorithm>

#include "jsonbuild.h"
#include "texttable.h"

namespace Host {

namespace {

/// Makes a text stand in a cell of a Markdown table as it is.
std::string escapeMarkdown(std::string_view text)
{
    std::string result;
    for (const char c : escapeControls(text)) {
        if (c == '<') {
            result += "&lt;";
        } else {
            if (c != '\0' && std::string_view("|\\`*_[]{}#").find(c) != std::string_view::npos) result += '\\';
            result += c;
        }
    }
    return result;
}

std::string join(const std::vector<std::string>& texts)
{
    std::string result;
    for (const std::string& text : texts)
        result += (result.empty() ? "" : ", ") + text;
    return result;
}

std::string describe(const ParameterRow& row)
{
    if (row.selectors.empty()) return row.toolTip;
    return row.toolTip + (row.toolTip.empty() ? "" : " ") + "Selected by " + join(row.selectors) + ".";
}

void addRows(std::string& text, const std::vector<ParameterRow>& rows)
{
    const std::string* category = nullptr;
    for (const ParameterRow& row : rows) {
        if (!category || *category != row.category) {
            category = &row.category;
            if (!row.category.empty()) text += "### " + escapeMarkdown(row.category) + "\n\n";
            text += "| Name | Kind | Value | Range | Access | Visibility | Description |\n";
            text += "|---|---|---|---|---|---|---|\n";
        }
        text += "| " + escapeMarkdown(row.name) + " | " + row.kind + " | " + escapeMarkdown(row.valueText) +
                " | " + escapeMarkdown(describeRange(row)) + " | " + row.access + " | " + row.visibility + " | " +
                escapeMarkdown(describe(row)) + " |\n";
        const ParameterRow* next = &row == &rows.back() ? nullptr : &row + 1;
        if (!next || next->category != row.category) text += "\n";
    }
}

std::string formatTable(const std::vector<ParameterRow>& rows)
{
    TextTable table({{"NAME"}, {"KIND"}, {"VALUE", 24}, {"RANGE", 32}, {"ACCESS"}, {"VISIBILITY"}, {"TOOL TIP"}});
    for (const ParameterRow& row : rows) {
        table.addRow(
            {row.name, row.kind, row.valueText, describeRange(row), row.access, row.visibility, describe(row)});
    }
    return table.toText(0);
}

/// "NAME = value", as in a recipe, and below it what there is to say of it.
void addParagraph(std::string& text, const ParameterRow& row, std::size_t width)
{
    constexpr std::size_t indent = 4;
    constexpr std::size_t least = 20;
    const auto addLines = [&](const std::string& line) {
        if (line.empty()) return;
        for (const std::string& part : wrap(escapeControls(line), std::max(width, least + indent) - indent))
            text += std::string(indent, ' ') + part + "\n";
    };
    const bool hasValue = !std::holds_alternative<std::monostate>(row.value);
    const bool isEmpty = row.valueText.empty();
    text += escapeControls(row.name + (hasValue ? isEmpty ? " =" : " = " + row.valueText : "")) + "\n";
    const std::string range = describeRange(row);
    addLines(row.kind + (range.empty() ? "" : " (" + range + ")") + ", " + row.access + ", " + row.visibility);
    addLines(describe(row));
}

JsonObject toJson(const ParameterRow& row)
{
    JsonObject object;
    add(object, "name", row.name);
    add(object, "display_name", row.displayName);
    add(object, "category", row.category);
    add(object, "kind", row.kind);
    add(object, "value", ParameterRow::Scalar(row.value));
    add(object, "min", ParameterRow::Scalar(row.minimum));
    add(object, "max", ParameterRow::Scalar(row.maximum));
    add(object, "increment", ParameterRow::Scalar(row.increment));
    add(object, "unit", row.unit);
    add(object, "entries", toJsonArray(row.entries));
    add(object, "access", row.access);
    add(object, "visibility", row.visibility);
    add(object, "tool_tip", row.toolTip);
    add(object, "selected_by", toJsonArray(row.selectors));
    return object;
}

}  // namespace

std::string formatParameterText(const std::vector<ModuleParameters>& modules, std::size_t width)
{
    std::string text;
    for (const ModuleParameters& entry : modules) {
        if (modules.size() > 1) text += (text.empty() ? "" : "\n") + entry.module + "\n";
        if (!entry.failure.empty()) {
            text += escapeControls(entry.failure) + "\n";
        } else if (width == 0) {
            text += formatTable(entry.rows);
        } else {
            for (const ParameterRow& row : entry.rows)
                addParagraph(text, row, width);
        }
    }
    return text;
}

std::string formatParameterMarkdown(const std::vector<ModuleParameters>& modules)
{
    std::string text =
        "# Parameters\n\nThe values are those of a fresh node. What they come to in a recipe and in files, such "
        "as `FileMode` for\n"
        "images and videos, is told in [recipe files](recipes.md) and [image and video files](image-files.md).\n";
    for (const ModuleParameters& entry : modules) {
        text += "\n## " + escapeMarkdown(entry.module) + "\n\n";
        if (entry.failure.empty()) {
            addRows(text, entry.rows);
            text.pop_back();
        } else {
            text += escapeMarkdown(entry.failure) + "\n";
        }
    }
    return text;
}

std::string formatParameterJson(const std::vector<ModuleParameters>& modules)
{
    JsonArray list;
    for (const ModuleParameters& entry : modules) {
        JsonObject object;
        add(object, "module", entry.module);
        if (entry.failure.empty()) {
            JsonArray rows;
            for (const ParameterRow& row : entry.rows)
                add(rows, toJson(row));
            add(object, "parameters", std::move(rows));
        } else {
            add(object, "failure", entry.failure);
        }
        add(list, std::move(object));
    }
    JsonObject root;
    add(root, "schema", std::string("stagelet-params/1"));
    add(root, "modules", std::move(list));
    return formatJson(JsonValue(std::move(root)));
}

}  // namespace Host
