#include "peer/Xml.h"

namespace Korvo::Bench {
namespace {

const std::string NAMESPACES = "xmlns:i=\"http://www.w3.org/2001/XMLSchema-instance\" "
                               "xmlns=\"http://schemas.datacontract.org/2004/07/";

} // namespace

const std::string WEB = "Norbel.Korvo.Web.Business.Models";
const std::string SERVICE = "Norbel.Korvo.Service.SDK.Models.Request";

std::string opened(const std::string &root, const std::string &model)
{
    return '<' + root + ' ' + NAMESPACES + model + "\">";
}

std::string closed(const std::string &root)
{
    return "</" + root + '>';
}

std::string element(const std::string &name, const std::string &value)
{
    return '<' + name + '>' + value + "</" + name + '>';
}

std::string body(const std::string &root, const std::string &model, const std::string &children)
{
    return opened(root, model) + children + closed(root);
}

std::string xmlText(const std::string &xml, const std::string &name)
{
    const std::size_t start = xml.find('<' + name + '>') + name.size() + 2;
    return xml.substr(start, xml.find("</", start) - start);
}

} // namespace Korvo::Bench
