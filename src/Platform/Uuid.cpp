#include "Platform/Uuid.h"

#include <QUuid>

#include <algorithm>

namespace slatewise {

Uuid Uuid::random() {
    Uuid result;
    const QByteArray bytes = QUuid::createUuid().toRfc4122();
    std::copy_n(bytes.cbegin(), result.bytes_.size(), result.bytes_.begin());
    return result;
}

std::string Uuid::text() const {
    const QByteArray bytes(reinterpret_cast<const char*>(bytes_.data()),
                           static_cast<qsizetype>(bytes_.size()));
    return QUuid::fromRfc4122(bytes).toString(QUuid::WithoutBraces).toStdString();
}

} // namespace slatewise
