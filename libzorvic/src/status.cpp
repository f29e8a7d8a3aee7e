#include "status.h"

namespace Zorvic::Internal {

StatusCode ToStatusCode(const grpc::Status& status) {
    switch (status.error_code()) {
        case grpc::StatusCode::OK:
            return ZORVIC_STATUS_OK;
        case grpc::StatusCode::INVALID_ARGUMENT:
        case grpc::StatusCode::OUT_OF_RANGE:
            return ZORVIC_STATUS_MISUSED;
        case grpc::StatusCode::NOT_FOUND:
        case grpc::StatusCode::ALREADY_EXISTS:
        case grpc::StatusCode::FAILED_PRECONDITION:
        case grpc::StatusCode::RESOURCE_EXHAUSTED:
        case grpc::StatusCode::PERMISSION_DENIED:
        case grpc::StatusCode::ABORTED:
            return ZORVIC_STATUS_FAILED;
        case grpc::StatusCode::UNIMPLEMENTED:
            return ZORVIC_STATUS_UNIMPLEMENTED;
        case grpc::StatusCode::UNAVAILABLE:
        case grpc::StatusCode::DEADLINE_EXCEEDED:
        case grpc::StatusCode::CANCELLED:
        case grpc::StatusCode::UNAUTHENTICATED:
            return ZORVIC_STATUS_NETWORKERROR;
        default:
            return ZORVIC_STATUS_INTERNALERROR;
    }
}

}  // namespace Zorvic::Internal
