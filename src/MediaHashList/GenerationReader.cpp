#include "MediaHashList/Generation.h"

#include "MediaHashList/ListError.h"
#include "Platform/Text.h"

#include <QXmlStreamReader>

#include <algorithm>

namespace slatewise::MediaHashList {

namespace {

/// Lists of the format have a handful on an element. Reading one takes the square of that.
constexpr int kMostAttributes = 1000;

/// Of elements within one that the format does not know. It has fewer than ten itself.
constexpr int kMostLevels = 64;

/// Each is held against each file.
constexpr std::size_t kMostPatterns = 10'000;

ListError notAList(const std::string& where) {
    return ListError(ListError::Reason::NotAList, where);
}

/// Skips the element at hand, of which the format knows nothing. For each name the reader looks
/// through all namespaces that are declared around it.
void skip(QXmlStreamReader& xml, int levels = kMostLevels, qsizetype declared = 0) {
    declared += xml.namespaceDeclarations().size();
    if (levels == 0 || declared > kMostAttributes)
        throw notAList(xml.name().toString().toStdString());
    while (xml.readNextStartElement())
        skip(xml, levels - 1, declared);
}

/// Without that of elements in it.
std::string text(QXmlStreamReader& xml) {
    QString held;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isEndElement())
            break;
        if (xml.isStartElement())
            skip(xml);
        else if (xml.isCharacters() || xml.isEntityReference())
            held += xml.text();
    }
    return held.toStdString();
}

std::string nameOf(const QXmlStreamReader& xml) {
    return xml.name().toString().toStdString();
}

/// Empty for a date of another form: a date is a fact, nothing depends on it.
std::optional<Instant> date(const QXmlStreamAttributes& attributes, const char* name) {
    return Clock::fromIso8601(attributes.value(QLatin1String(name)).toString().toStdString());
}

std::string downwardPath(std::string path) {
    if (!leadsDown(path))
        throw ListError(ListError::Reason::LeadsOut, path);
    return path;
}

/// Calls `visit(name)` for each element in the one at hand. It must read the element to its end.
template <typename Visit>
void forEachChild(QXmlStreamReader& xml, Visit&& visit) {
    while (xml.readNextStartElement())
        visit(nameOf(xml));
}

std::optional<HashFormat> formatNamed(const std::string& name) {
    const auto format = fromRawValue<HashFormat>(name);
    const bool isListed = format && std::find(kHashFormats.begin(), kHashFormats.end(), *format) !=
                                        kHashFormats.end();
    return isListed ? format : std::nullopt;
}

std::string value(QXmlStreamReader& xml, HashFormat format) {
    auto given = text(xml);
    if (format != HashFormat::C4)
        given = Text::asciiLowercased(given);
    if (!isValue(format, given))
        throw ListError(ListError::Reason::NotAValue, given);
    return given;
}

void readCreator(QXmlStreamReader& xml, Creator& creator) {
    forEachChild(xml, [&](const std::string& name) {
        if (name == "creationdate") {
            creator.createdAt = Clock::fromIso8601(text(xml)).value_or(Instant{});
        } else if (name == "hostname") {
            creator.hostName = text(xml);
        } else if (name == "tool") {
            creator.toolVersion = xml.attributes().value("version").toString().toStdString();
            creator.tool = text(xml);
        } else if (name == "author") {
            auto role = xml.attributes().value("role").toString().toStdString();
            creator.authors.push_back({text(xml), std::move(role)});
        } else if (name == "location") {
            creator.location = text(xml);
        } else if (name == "comment") {
            creator.comment = text(xml);
        } else {
            skip(xml);
        }
    });
}

void readFolderValues(QXmlStreamReader& xml, std::vector<FolderValue>& values,
                      std::string FolderValue::*part) {
    forEachChild(xml, [&](const std::string& name) {
        const auto format = formatNamed(name);
        if (!format)
            return skip(xml);
        auto found = std::find_if(values.begin(), values.end(),
                                  [&](const FolderValue& each) { return each.format == *format; });
        if (found == values.end())
            found = values.insert(found, FolderValue{*format, {}, {}});
        (*found).*part = value(xml, *format);
    });
}

bool readFolderPart(QXmlStreamReader& xml, const std::string& name,
                    std::vector<FolderValue>& values) {
    if (name == "content")
        readFolderValues(xml, values, &FolderValue::content);
    else if (name == "structure")
        readFolderValues(xml, values, &FolderValue::structure);
    else
        return false;
    return true;
}

HashedFolder readFolder(QXmlStreamReader& xml) {
    HashedFolder folder;
    forEachChild(xml, [&](const std::string& name) {
        if (name == "path") {
            folder.modified = date(xml.attributes(), "lastmodificationdate");
            folder.path = text(xml);
        } else if (!readFolderPart(xml, name, folder.values)) {
            skip(xml);
        }
    });
    folder.path = downwardPath(std::move(folder.path));
    return folder;
}

HashedFile readFile(QXmlStreamReader& xml) {
    HashedFile file;
    forEachChild(xml, [&](const std::string& name) {
        const auto attributes = xml.attributes();
        const auto format = formatNamed(name);
        if (name == "path") {
            bool isNumber = false;
            const auto size = attributes.value("size").toLongLong(&isNumber);
            if (isNumber && size >= 0)
                file.sizeBytes = size;
            file.modified = date(attributes, "lastmodificationdate");
            file.path = text(xml);
        } else if (name == "previousPath") {
            file.previousPath = downwardPath(text(xml));
        } else if (format) {
            const auto action = attributes.value("action").toString().toStdString();
            file.values.push_back({.format = *format,
                                   .value = value(xml, *format),
                                   .action = fromRawValue<HashAction>(action),
                                   .hashedAt = date(attributes, "hashdate")});
        } else {
            skip(xml);
        }
    });
    file.path = downwardPath(std::move(file.path));
    return file;
}

void readProcess(QXmlStreamReader& xml, Generation& generation) {
    forEachChild(xml, [&](const std::string& name) {
        if (name == "process") {
            const auto process = fromRawValue<Process>(text(xml));
            if (!process)
                throw notAList("process");
            generation.process = *process;
        } else if (name == "roothash") {
            forEachChild(xml, [&](const std::string& part) {
                if (!readFolderPart(xml, part, generation.root))
                    skip(xml);
            });
        } else if (name == "ignore") {
            forEachChild(xml, [&](const std::string&) {
                if (generation.ignored.size() == kMostPatterns)
                    throw ListError(ListError::Reason::TooLarge, "ignore");
                generation.ignored.push_back(text(xml));
            });
        } else {
            skip(xml);
        }
    });
}

Reference readReference(QXmlStreamReader& xml) {
    Reference reference;
    forEachChild(xml, [&](const std::string& name) {
        if (name == "path")
            reference.path = downwardPath(text(xml));
        else if (name == "c4")
            reference.c4 = value(xml, HashFormat::C4);
        else
            skip(xml);
    });
    if (reference.path.empty() || reference.c4.empty())
        throw notAList("hashlistreference");
    return reference;
}

void readHashes(QXmlStreamReader& xml, Generation& generation) {
    forEachChild(xml, [&](const std::string& name) {
        if (name == "hash")
            generation.files.push_back(readFile(xml));
        else if (name == "directoryhash")
            generation.folders.push_back(readFolder(xml));
        else
            skip(xml);
    });
}

/// Opens the document at its root. A document that declares entities can make a gigabyte of a line,
/// and no list has a reason to.
void enter(QXmlStreamReader& xml, const char* root, const char* space) {
    while (!xml.atEnd() && !xml.isStartElement()) {
        xml.readNext();
        if (xml.isDTD())
            throw ListError(ListError::Reason::DeclaresDocumentType);
    }
    if (!xml.isStartElement() || xml.name() != QLatin1String(root) ||
        xml.namespaceUri() != QLatin1String(space))
        throw notAList(root);
}

/// Also behind its end: what is no XML any more others need not take for a list.
void requireWhole(QXmlStreamReader& xml) {
    while (!xml.atEnd())
        xml.readNext();
    if (xml.hasError())
        throw notAList(std::to_string(xml.lineNumber()) + ":" + std::to_string(xml.columnNumber()));
}

/// Looks at the bytes alone, before anything reads them as what they are. An attribute is an equals
/// sign before a quote; blanks may stand between them, and zeros in encodings of several bytes. A
/// "<" stands in none, while a ">" may.
void requireFewAttributes(std::string_view text) {
    constexpr std::size_t kEnoughToFindIt = 60;
    constexpr std::string_view kBetween(" \t\r\n\0", 5);
    std::size_t element = 0;
    int count = 0;
    bool isBehindEquals = false;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const char byte = text[at];
        if (byte == '<') {
            element = at;
            count = 0;
        }
        const bool isAttribute = isBehindEquals && (byte == '"' || byte == '\'');
        if (isAttribute && ++count > kMostAttributes)
            throw notAList(std::string(text.substr(element, kEnoughToFindIt)));
        isBehindEquals =
            byte == '=' || (isBehindEquals && kBetween.find(byte) != std::string_view::npos);
    }
}

QByteArray bytesIn(std::string_view text) {
    return QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

Generation readGeneration(std::string_view given) {
    requireFewAttributes(given);
    QXmlStreamReader xml(bytesIn(given));
    enter(xml, "hashlist", "urn:ASC:MHL:v2.0");
    Generation generation;
    forEachChild(xml, [&](const std::string& name) {
        if (name == "creatorinfo")
            readCreator(xml, generation.creator);
        else if (name == "processinfo")
            readProcess(xml, generation);
        else if (name == "hashes")
            readHashes(xml, generation);
        else if (name == "references")
            forEachChild(xml,
                         [&](const auto&) { generation.references.push_back(readReference(xml)); });
        else
            skip(xml);
    });
    requireWhole(xml);
    return generation;
}

std::vector<ChainLink> readChain(std::string_view given) {
    requireFewAttributes(given);
    QXmlStreamReader xml(bytesIn(given));
    enter(xml, "ascmhldirectory", "urn:ASC:MHL:DIRECTORY:v2.0");
    std::vector<ChainLink> chain;
    forEachChild(xml, [&](const std::string&) {
        const int number = xml.attributes().value("sequencenr").toInt();
        auto reference = readReference(xml);
        if (reference.path.find('/') != std::string::npos)
            throw notAList("path");
        chain.push_back({number, std::move(reference.path), std::move(reference.c4)});
    });
    requireWhole(xml);
    // Their numbers say what came first, wherever they stand.
    std::stable_sort(chain.begin(), chain.end(), [](const auto& left, const auto& right) {
        return left.number < right.number;
    });
    // A number that is not there, or there twice, is of a generation that somebody took out.
    int expected = 0;
    for (const auto& link : chain) {
        if (link.number != ++expected)
            throw notAList("sequencenr");
    }
    return chain;
}

} // namespace slatewise::MediaHashList
