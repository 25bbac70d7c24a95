#include "net/NetResult.h"

qint32 NetResult::number() const
{
    switch (error) {
    case NetError::None:
        return 0;
    case NetError::ServerNotFound:
        return 1;
    case NetError::BadUrl:
        return 2;
    case NetError::ZeroSize:
        return 3;
    case NetError::ConnectionLost:
        return 4;
    case NetError::WriteFile:
        return 5;
    case NetError::HttpStatus:
        break;
    }
    return httpStatus;
}

QString NetResult::messageKey() const
{
    switch (error) {
    case NetError::None:
        return {};
    case NetError::ServerNotFound:
        return QStringLiteral("T19500");
    case NetError::BadUrl:
        return QStringLiteral("T19501");
    case NetError::ZeroSize:
        return QStringLiteral("T19502");
    case NetError::ConnectionLost:
        return QStringLiteral("T19503");
    case NetError::WriteFile:
        return QStringLiteral("T19504");
    case NetError::HttpStatus:
        break;
    }
    return httpStatus == 404 ? QStringLiteral("T19505") : QStringLiteral("T19506");
}
