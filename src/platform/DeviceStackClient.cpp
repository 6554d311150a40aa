#include <platform/DeviceStackClient.h>

#include <utility>

namespace Lumo
{
ResponseError::ResponseError(int code, std::string firstText, std::string secondText, std::string message)
    : code_(code), firstText_(std::move(firstText)), secondText_(std::move(secondText)), message_(std::move(message))
{
}

int ResponseError::GetCode() const { return code_; }
const std::string& ResponseError::GetFirstText() const { return firstText_; }
const std::string& ResponseError::GetSecondText() const { return secondText_; }
std::string ResponseError::GetMessage() const { return message_; }
} // namespace Lumo
