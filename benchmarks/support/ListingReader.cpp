#include "support/ListingReader.h"

#include <expat.h>

#include <charconv>
#include <cstdio>
#include <memory>
#include <stdexcept>

namespace Korvo::Bench {
namespace {

struct Reading
{
    std::vector<ListedFile> files;
    std::string text;
};

void start(void *data, const XML_Char *name, const XML_Char **)
{
    auto *const reading = static_cast<Reading *>(data);
    reading->text.clear();
    if (std::string_view(name) == "ObjectModel")
        reading->files.emplace_back();
}

void characters(void *data, const XML_Char *text, int length)
{
    static_cast<Reading *>(data)->text.append(text, static_cast<std::size_t>(length));
}

std::time_t timeOf(const std::string &text)
{
    std::tm parts{};
    if (std::sscanf(text.c_str(), "%d-%d-%dT%d:%d:%d", &parts.tm_year, &parts.tm_mon, &parts.tm_mday, &parts.tm_hour,
                    &parts.tm_min, &parts.tm_sec)
        != 6)
        return 0;
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    return timegm(&parts);
}

void take(ListedFile &file, std::string_view name, std::string &text)
{
    if (name == "FileName")
        file.fileName = text;
    else if (name == "Key")
        file.key = text;
    else if (name == "ModifiedDate")
        file.modified = timeOf(text);
    else if (name == "Size")
        std::from_chars(text.data(), text.data() + text.size(), file.size);
    else if (name == "Type")
        file.type = text;
    else if (name == "Directory")
        file.directory = text;
}

void end(void *data, const XML_Char *name)
{
    auto *const reading = static_cast<Reading *>(data);
    if (!reading->files.empty())
        take(reading->files.back(), name, reading->text);
    reading->text.clear();
}

} // namespace

std::vector<ListedFile> readListing(std::string_view xml)
{
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate("UTF-8"),
                                                                              XML_ParserFree);
    Reading reading;
    XML_SetUserData(parser.get(), &reading);
    XML_SetElementHandler(parser.get(), start, end);
    XML_SetCharacterDataHandler(parser.get(), characters);
    if (XML_Parse(parser.get(), xml.data(), static_cast<int>(xml.size()), 1) != XML_STATUS_OK)
        throw std::runtime_error("the listing is broken");
    return std::move(reading.files);
}

} // namespace Korvo::Bench
