#pragma once

#include "Exchange.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace LocalPlatform {

/// "<name>escaped value</name>"
std::string element(const std::string &name, std::string_view value);

void answerXml(Exchange &exchange, int status, const std::string &body);
void answerJson(Exchange &exchange, int status, const nlohmann::json &body);
void answerText(Exchange &exchange, int status, const std::string &body, const std::string &type);

/// The bytes of a stored object, whole or in the ranges asked for.
void answerObject(Exchange &exchange, const std::shared_ptr<ObjectReader> &object, const std::string &name);

std::string contentTypeOf(const std::string &fileName);

} // namespace LocalPlatform
