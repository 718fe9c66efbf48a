#include "BodyReader.h"

#include "Refusal.h"
#include "Text.h"

#include <algorithm>

namespace LocalPlatform {
namespace {

constexpr const char *SCHEMA_INSTANCE = "http://www.w3.org/2001/XMLSchema-instance";
constexpr const char *ARRAYS = "http://schemas.microsoft.com/2003/10/Serialization/Arrays";
const std::string CONTRACT_PREFIX = "http://schemas.datacontract.org/2004/07/";

// Without parse_escapes: "&" means itself here, because no client escapes.
constexpr unsigned int PARSE_OPTIONS = pugi::parse_minimal | pugi::parse_ws_pcdata_single;

[[noreturn]] void refuse(const std::string &reason, const std::string &element)
{
    throw Refusal(400, reason, printable(element));
}

void checkRoot(const pugi::xml_node &root, const RootElement &expected)
{
    if (root.name() != expected.name)
        refuse("the root element is " + printable(root.name()) + ", not " + expected.name, root.name());
    if (root.attribute("xmlns").value() != expected.xmlNamespace)
        refuse("wrong namespace of the root element", root.name());
    for (const pugi::xml_attribute &attribute : root.attributes()) {
        const std::string name = attribute.name();
        const bool known = name == "xmlns" || (name == "xmlns:i" && std::string(attribute.value()) == SCHEMA_INSTANCE);
        if (!known)
            refuse("unexpected attribute " + printable(name) + " of the root element", root.name());
    }
}

bool isText(std::string_view text)
{
    return isValidUtf8(text) && std::all_of(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) >= 0x20 || c == '\t' || c == '\n' || c == '\r';
    });
}

std::string plainText(const pugi::xml_node &node)
{
    if (node.first_child() != node.last_child() || (node.first_child() && node.first_child().type() != pugi::node_pcdata))
        refuse("an element inside a value", node.name());
    return node.child_value();
}

} // namespace

RootElement webRoot(const std::string &name)
{
    return {name, CONTRACT_PREFIX + "Norbel.Korvo.Web.Business.Models"};
}

RootElement serviceRoot(const std::string &name)
{
    return {name, CONTRACT_PREFIX + "Norbel.Korvo.Service.SDK.Models.Request"};
}

RootElement accountRoot(const std::string &name)
{
    return {name, CONTRACT_PREFIX + "Norbel.Korvo.Web.Client.Controllers.Api"};
}

BodyReader::BodyReader(const std::string &body, const RootElement &root)
{
    const pugi::xml_parse_result result = document.load_buffer(body.data(), body.size(), PARSE_OPTIONS, pugi::encoding_utf8);
    if (!result)
        refuse(std::string("not XML: ") + result.description() + " at byte " + std::to_string(result.offset), root.name);
    const pugi::xml_node element = document.first_child();
    if (element.next_sibling())
        refuse("something behind the root element", root.name);
    checkRoot(element, root);
    next = element.first_child();
}

pugi::xml_node BodyReader::takeNode(const char *name)
{
    if (!next)
        refuse(std::string("missing element ") + name, name);
    if (std::string(next.name()) != name)
        refuse(std::string("expected element ") + name + ", found " + (*next.name() ? printable(next.name()) : std::string("text")), name);
    const pugi::xml_node taken = next;
    next = next.next_sibling();
    return taken;
}

std::string BodyReader::take(const char *name)
{
    const pugi::xml_node node = takeNode(name);
    if (node.first_attribute())
        refuse("unexpected attribute", name);
    std::string value = plainText(node);
    if (!isText(value))
        refuse("a value that is not text", name);
    return value;
}

std::string BodyReader::takeFilled(const char *name)
{
    std::string value = take(name);
    if (value.empty())
        refuse("an empty value", name);
    return value;
}

std::string BodyReader::takeBytes(const char *name)
{
    const pugi::xml_node node = takeNode(name);
    if (node.first_attribute())
        refuse("unexpected attribute", name);
    if (node.first_child() != node.last_child())
        refuse("an element inside a value", name);
    auto bytes = base64Decoded(node.child_value());
    if (!bytes)
        refuse("not Base64", name);
    return std::move(*bytes);
}

std::int64_t BodyReader::takeNumber(const char *name)
{
    const auto number = parsedDecimal(take(name));
    if (!number)
        refuse("not a decimal number", name);
    return *number;
}

bool BodyReader::nextIs(const char *name) const
{
    return std::string(next.name()) == name;
}

std::vector<std::string> BodyReader::takePrefixes()
{
    const pugi::xml_node node = takeNode("Prefixes");
    const pugi::xml_attribute attribute = node.first_attribute();
    if (std::string(attribute.name()) != "xmlns:d2p1" || std::string(attribute.value()) != ARRAYS || attribute.next_attribute())
        refuse("wrong namespace of the array", "Prefixes");
    std::vector<std::string> prefixes;
    for (const pugi::xml_node &entry : node.children()) {
        if (std::string(entry.name()) != "d2p1:string")
            refuse("expected element d2p1:string", "Prefixes");
        prefixes.push_back(plainText(entry));
    }
    return prefixes;
}

void BodyReader::end() const
{
    if (next)
        refuse("unexpected element", next.name());
}

} // namespace LocalPlatform
