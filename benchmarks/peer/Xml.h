#pragma once

#include <string>

namespace Korvo::Bench {

/// Namespaces of the bodies for the web server and for the service.
extern const std::string WEB;
extern const std::string SERVICE;

std::string opened(const std::string &root, const std::string &model);
std::string closed(const std::string &root);
std::string element(const std::string &name, const std::string &value);
std::string body(const std::string &root, const std::string &model, const std::string &children);

/// Text of the first element of this name.
std::string xmlText(const std::string &xml, const std::string &name);

} // namespace Korvo::Bench
