#include "text/beyondinterface.h"

#include <QCoreApplication>

#if __has_include(<zorvic/extras.h>)
#include <zorvic/extras.h>

namespace Zorvic {
[[gnu::weak]] std::string LastReason(const Session& session);
[[gnu::weak]] std::string LinkProblem(const Session& session);
[[gnu::weak]] std::string LibraryVersion();
[[gnu::weak]] StatusCode DescribeUnit(Session& session, LANZorvic& unit);
}  // namespace Zorvic

QString LastReasonText(const Zorvic::Session& session) {
    return &Zorvic::LastReason ? QString::fromStdString(Zorvic::LastReason(session)) : QString();
}

QString LinkProblemText(const Zorvic::Session& session) {
    return &Zorvic::LinkProblem ? QString::fromStdString(Zorvic::LinkProblem(session)) : QString();
}

QString LibraryVersionText() {
    return &Zorvic::LibraryVersion ? QString::fromStdString(Zorvic::LibraryVersion()) : QString();
}

QString UnitVersionText(Zorvic::Session& session) {
    Zorvic::LANZorvic unit;
    if (!&Zorvic::DescribeUnit || Zorvic::DescribeUnit(session, unit) != Zorvic::ZORVIC_STATUS_OK) return {};
    return QCoreApplication::translate("AboutDialog", "version %1, protocol %2")
        .arg(QString::fromStdString(unit.CommunicatorVersion), QString::fromStdString(unit.APIVersion));
}

#else

QString LastReasonText(const Zorvic::Session& /*session*/) {
    return {};
}

QString LinkProblemText(const Zorvic::Session& /*session*/) {
    return {};
}

QString LibraryVersionText() {
    return {};
}

QString UnitVersionText(Zorvic::Session& /*session*/) {
    return {};
}

#endif
