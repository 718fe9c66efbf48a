#pragma once

#include <pugixml.hpp>

#include <string>
#include <string_view>
#include <vector>

namespace LocalPlatform {

/// What a request's root element has to be called, and in which namespace.
struct RootElement
{
    std::string name;
    std::string xmlNamespace;
};

RootElement webRoot(const std::string &name);
RootElement serviceRoot(const std::string &name);
RootElement accountRoot(const std::string &name);

/// Reads an XML body as strictly as the servers do: root, namespace, and children by name in their one order. Values are
/// taken as they stand, since clients write them without escaping. Everything else throws Refusal, naming the element.
class BodyReader
{
public:
    BodyReader(const std::string &body, const RootElement &root);

    /// Value of the next child, which must have this name.
    std::string take(const char *name);

    /// As take(), but an empty value is refused.
    std::string takeFilled(const char *name);

    /// The bytes of the next child's Base64 text.
    std::string takeBytes(const char *name);
    std::int64_t takeNumber(const char *name);
    bool nextIs(const char *name) const;

    /// The next child "Prefixes" with its "d2p1:string" entries.
    std::vector<std::string> takePrefixes();

    /// There is no further child.
    void end() const;

private:
    pugi::xml_node takeNode(const char *name);

    pugi::xml_document document;
    pugi::xml_node next;
};

} // namespace LocalPlatform
