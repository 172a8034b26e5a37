#include "MockUDisks.h"

#include <QByteArrayList>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>

#include <stdexcept>

namespace slatewise::test {

namespace {

constexpr auto kService = "org.freedesktop.UDisks2";
constexpr auto kRoot = "/org/freedesktop/UDisks2";

} // namespace

class MockUDisks::Speaker : public QDBusVirtualObject {
public:
    explicit Speaker(MockUDisks& mock) : mock_(mock) {}

    QString introspect(const QString&) const override { return {}; }

    bool handleMessage(const QDBusMessage& question, const QDBusConnection& bus) override {
        question.setDelayedReply(true);
        if (!mock_.isSilent_)
            bus.send(mock_.answerTo(question));
        return true;
    }

private:
    MockUDisks& mock_;
};

MockUDisks::MockUDisks(UDisksObjects::Objects objects)
    : objects_(std::move(objects)), speaker_(std::make_unique<Speaker>(*this)) {
    qDBusRegisterMetaType<UDisksObjects::Interfaces>();
    qDBusRegisterMetaType<UDisksObjects::Objects>();
    qDBusRegisterMetaType<QByteArrayList>();
    const auto address = QString::fromStdString(bus_.address());
    auto bus = QDBusConnection::connectToBus(address, "mock " + address);
    const bool isThere = bus.registerVirtualObject(kRoot, speaker_.get(), QDBusConnection::SubPath);
    speaker_->moveToThread(&thread_);
    thread_.start();
    if (!isThere || !bus.registerService(kService))
        throw std::runtime_error("no mock: " + bus.lastError().message().toStdString());
}

MockUDisks::~MockUDisks() {
    QDBusConnection::disconnectFromBus("mock " + QString::fromStdString(bus_.address()));
    thread_.quit();
    thread_.wait();
}

void MockUDisks::refuse(const std::string& method, const std::string& error) {
    const std::lock_guard guard(lock_);
    refusedMethod_ = method;
    refusal_ = error;
}

std::vector<std::string> MockUDisks::deeds() const {
    const std::lock_guard guard(lock_);
    return deeds_;
}

QDBusMessage MockUDisks::answerTo(const QDBusMessage& question) {
    const auto method = question.member().toStdString();
    if (method == "GetManagedObjects") {
        ++timesAskedForObjects_;
        return question.createReply(QVariant::fromValue(objects_));
    }
    const std::lock_guard guard(lock_);
    deeds_.push_back(method +
                     question.path().mid(QString(kRoot).size()).replace(0, 1, " ").toStdString());
    if (method == refusedMethod_)
        return question.createErrorReply(
            QString::fromStdString("org.freedesktop.UDisks2.Error." + refusal_), "target is busy");
    return question.createReply();
}

} // namespace slatewise::test
