#include "MediaHashList/Generation.h"

#include <QXmlStreamWriter>

#include <algorithm>

namespace slatewise::MediaHashList {

namespace {

QString qt(std::string_view text) {
    // Taken for the mark of an encoding, it would be left out, and a name would be another's.
    constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
    qsizetype marks = 0;
    for (; text.starts_with(kByteOrderMark); ++marks)
        text.remove_prefix(kByteOrderMark.size());
    return QString(marks, QChar::ByteOrderMark) +
           QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// What a person has typed may hold what XML cannot, which would make the whole list unreadable.
/// Nothing depends on it, so that it is shown as U+FFFD.
QString freeText(std::string_view text) {
    QString held = qt(text);
    for (auto& character : held) {
        const auto code = character.unicode();
        if ((code < u' ' && code != u'\t' && code != u'\n') || code > u'\xfffd')
            character = QChar::ReplacementCharacter;
    }
    return held;
}

void beginDocument(QXmlStreamWriter& xml) {
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(2);
    xml.writeStartDocument();
}

void writeDate(QXmlStreamWriter& xml, const char* name, const std::optional<Instant>& moment) {
    if (moment)
        xml.writeAttribute(name, qt(Clock::iso8601(*moment)));
}

void writeOptional(QXmlStreamWriter& xml, const char* name, const std::string& text) {
    if (!text.empty())
        xml.writeTextElement(name, freeText(text));
}

/// The format wants values in an order of its own.
template <typename Value, typename Write>
void writeInOrder(const std::vector<Value>& values, Write&& write) {
    for (const auto format : kHashFormats) {
        for (const auto& value : values) {
            if (value.format == format)
                write(value);
        }
    }
}

void write(QXmlStreamWriter& xml, const Creator& creator) {
    xml.writeStartElement("creatorinfo");
    xml.writeTextElement("creationdate", qt(Clock::iso8601(creator.createdAt)));
    xml.writeTextElement("hostname", freeText(creator.hostName));
    xml.writeStartElement("tool");
    xml.writeAttribute("version", qt(creator.toolVersion));
    xml.writeCharacters(qt(creator.tool));
    xml.writeEndElement();
    for (const auto& author : creator.authors) {
        xml.writeStartElement("author");
        if (!author.role.empty())
            xml.writeAttribute("role", freeText(author.role));
        xml.writeCharacters(freeText(author.name));
        xml.writeEndElement();
    }
    writeOptional(xml, "location", creator.location);
    writeOptional(xml, "comment", creator.comment);
    xml.writeEndElement();
}

void write(QXmlStreamWriter& xml, const std::vector<FolderValue>& values) {
    xml.writeStartElement("content");
    writeInOrder(values, [&](const FolderValue& value) {
        xml.writeTextElement(qt(rawValue(value.format)), qt(value.content));
    });
    xml.writeEndElement();
    xml.writeStartElement("structure");
    writeInOrder(values, [&](const FolderValue& value) {
        xml.writeTextElement(qt(rawValue(value.format)), qt(value.structure));
    });
    xml.writeEndElement();
}

void write(QXmlStreamWriter& xml, const HashedFile& file) {
    xml.writeStartElement("hash");
    xml.writeStartElement("path");
    if (file.sizeBytes)
        xml.writeAttribute("size", QString::number(*file.sizeBytes));
    writeDate(xml, "lastmodificationdate", file.modified);
    xml.writeCharacters(qt(file.path));
    xml.writeEndElement();
    writeInOrder(file.values, [&](const FileValue& value) {
        xml.writeStartElement(qt(rawValue(value.format)));
        if (value.action)
            xml.writeAttribute("action", qt(rawValue(*value.action)));
        writeDate(xml, "hashdate", value.hashedAt);
        xml.writeCharacters(qt(value.value));
        xml.writeEndElement();
    });
    if (!file.previousPath.empty())
        xml.writeTextElement("previousPath", qt(file.previousPath));
    xml.writeEndElement();
}

void write(QXmlStreamWriter& xml, const HashedFolder& folder) {
    xml.writeStartElement("directoryhash");
    xml.writeStartElement("path");
    writeDate(xml, "lastmodificationdate", folder.modified);
    xml.writeCharacters(qt(folder.path));
    xml.writeEndElement();
    write(xml, folder.values);
    xml.writeEndElement();
}

/// Whether everything in a folder has been written once this file is next.
bool isBehind(const HashedFile& file, const HashedFolder& folder) {
    const auto below = [](std::string path) {
        std::replace(path.begin(), path.end(), '/', '\0');
        return path;
    };
    return below(file.path) > below(folder.path + "/\xff");
}

void writeHashes(QXmlStreamWriter& xml, const Generation& generation) {
    if (generation.files.empty() && generation.folders.empty())
        return;
    xml.writeStartElement("hashes");
    auto folder = generation.folders.begin();
    for (const auto& file : generation.files) {
        while (folder != generation.folders.end() && isBehind(file, *folder))
            write(xml, *folder++);
        write(xml, file);
    }
    while (folder != generation.folders.end())
        write(xml, *folder++);
    xml.writeEndElement();
}

void writeReference(QXmlStreamWriter& xml, const std::string& path, const std::string& c4) {
    xml.writeTextElement("path", qt(path));
    xml.writeTextElement("c4", qt(c4));
    xml.writeEndElement();
}

} // namespace

std::string writeGeneration(const Generation& generation) {
    QByteArray text;
    QXmlStreamWriter xml(&text);
    beginDocument(xml);
    xml.writeStartElement("hashlist");
    xml.writeDefaultNamespace("urn:ASC:MHL:v2.0");
    xml.writeAttribute("version", "2.0");
    write(xml, generation.creator);
    xml.writeStartElement("processinfo");
    xml.writeTextElement("process", qt(rawValue(generation.process)));
    if (!generation.root.empty()) {
        xml.writeStartElement("roothash");
        write(xml, generation.root);
        xml.writeEndElement();
    }
    if (!generation.ignored.empty()) {
        xml.writeStartElement("ignore");
        for (const auto& pattern : generation.ignored)
            xml.writeTextElement("pattern", qt(pattern));
        xml.writeEndElement();
    }
    xml.writeEndElement();
    writeHashes(xml, generation);
    if (!generation.references.empty()) {
        xml.writeStartElement("references");
        for (const auto& reference : generation.references) {
            xml.writeStartElement("hashlistreference");
            writeReference(xml, reference.path, reference.c4);
        }
        xml.writeEndElement();
    }
    xml.writeEndDocument();
    return text.toStdString();
}

std::string writeChain(const std::vector<ChainLink>& chain) {
    QByteArray text;
    QXmlStreamWriter xml(&text);
    beginDocument(xml);
    xml.writeStartElement("ascmhldirectory");
    xml.writeDefaultNamespace("urn:ASC:MHL:DIRECTORY:v2.0");
    for (const auto& link : chain) {
        xml.writeStartElement("hashlist");
        xml.writeAttribute("sequencenr", QString::number(link.number));
        writeReference(xml, link.fileName, link.c4);
    }
    xml.writeEndDocument();
    return text.toStdString();
}

} // namespace slatewise::MediaHashList
