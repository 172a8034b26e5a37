#include "Platform/HttpSession.h"

#include "Platform/Error.h"

#include <QCoreApplication>
#include <QCoro/QCoroNetworkReply>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QSysInfo>
#include <QTimer>

#include <algorithm>
#include <cstring>
#include <memory>

namespace slatewise::HttpSession {

namespace {

/// More than any answer we know how to read.
constexpr std::size_t kLargestAnswerBytes = std::size_t{1024} * 1024;

/// A body that can be read once. A body that can be rewound would be sent again, without a word,
/// when a connection breaks before the answer. Behind the answer rewinding does no harm, and some
/// answers make the network library try.
class OnceReadBody : public QIODevice {
public:
    explicit OnceReadBody(std::string bytes) : bytes_(std::move(bytes)) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    void setAnswered() { isAnswered_ = true; }

    bool isSequential() const override { return true; }
    bool reset() override { return isAnswered_; }
    bool atEnd() const override { return left() == 0; }
    qint64 bytesAvailable() const override { return left() + QIODevice::bytesAvailable(); }

protected:
    qint64 readData(char* target, qint64 limit) override {
        const auto count = std::min(limit, left());
        if (count == 0)
            return -1;
        std::memcpy(target, bytes_.data() + position_, static_cast<std::size_t>(count));
        position_ += count;
        return count;
    }
    qint64 writeData(const char*, qint64) override { return -1; }

private:
    qint64 left() const { return static_cast<qint64>(bytes_.size()) - position_; }

    std::string bytes_;
    qint64 position_ = 0;
    bool isAnswered_ = false;
};

struct DeleteLater {
    void operator()(QObject* object) const { object->deleteLater(); }
};
using Reply = std::unique_ptr<QNetworkReply, DeleteLater>;

QNetworkAccessManager& session() {
    static QPointer<QNetworkAccessManager> shared;
    if (!shared)
        shared = new QNetworkAccessManager(QCoreApplication::instance());
    return *shared;
}

QUrl addressFrom(const std::string& text) {
    QUrl url(QString::fromStdString(text), QUrl::StrictMode);
    const bool isWeb = url.scheme() == "http" || url.scheme() == "https";
    if (!url.isValid() || !isWeb || url.host().isEmpty())
        throw Error("not a web address");
    return url;
}

Reply send(const QUrl& url, std::string body, std::chrono::milliseconds idleLimit) {
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
    request.setHeader(QNetworkRequest::ContentLengthHeader, static_cast<qint64>(body.size()));
    request.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    request.setTransferTimeout(static_cast<int>(idleLimit.count()));
    auto* const upload = new OnceReadBody(std::move(body));
    Reply reply(session().post(request, upload));
    upload->setParent(reply.get());
    QObject::connect(reply.get(), &QNetworkReply::metaDataChanged, upload,
                     [upload] { upload->setAnswered(); });
    return reply;
}

/// The time after which the whole of a request ends.
std::chrono::milliseconds wholeLimit(const Limits& limits, std::size_t bodySize) {
    using Milliseconds = std::chrono::duration<double, std::milli>;
    const Milliseconds bodyTime(1000 * static_cast<double>(bodySize) /
                                limits.slowestBytesPerSecond);
    return limits.idle + std::chrono::duration_cast<std::chrono::milliseconds>(bodyTime);
}

/// Why there is no whole answer; empty when there is one. Only failures of the connection itself
/// are told in the network library's words: its other texts repeat the address.
std::string failureOf(const QNetworkReply& reply) {
    constexpr int kLastConnectionFailure = 199;
    const auto failure = reply.error();
    if (failure == QNetworkReply::OperationCanceledError)
        return "no answer in time";
    if (failure == QNetworkReply::ContentReSendError)
        return "the connection broke before the answer";
    if (failure != QNetworkReply::NoError && failure <= kLastConnectionFailure)
        return reply.errorString().toStdString();
    if (!reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid())
        return "what came is no answer of a web service";
    return {};
}

} // namespace

QCoro::Task<Answer> postJSON(std::string address, std::string body, Limits limits) {
    const QUrl url = addressFrom(address);
    const auto latest = wholeLimit(limits, body.size());
    const Reply reply = send(url, std::move(body), limits.idle);
    QTimer::singleShot(latest, reply.get(), [raw = reply.get()] { raw->abort(); });
    // Kept apart from this frame, which can be gone while a handler that ended the request returns.
    const auto answer = std::make_shared<Answer>();
    QObject::connect(reply.get(), &QIODevice::readyRead, reply.get(), [raw = reply.get(), answer] {
        answer->body += raw->readAll().toStdString();
        if (answer->body.size() > kLargestAnswerBytes)
            raw->abort();
    });
    co_await reply.get();

    if (answer->body.size() > kLargestAnswerBytes)
        throw Error("the answer is too large");
    if (const auto failure = failureOf(*reply); !failure.empty())
        throw Error(failure);
    answer->body += reply->readAll().toStdString();
    answer->status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    co_return std::move(*answer);
}

std::string hostName() {
    return QSysInfo::machineHostName().toStdString();
}

} // namespace slatewise::HttpSession
