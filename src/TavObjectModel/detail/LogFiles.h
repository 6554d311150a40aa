#pragma once
// The file names the library's log events are reported under. Integrators filter and grep logs
// by them, so they stay fixed whichever source file the code that logs lives in (several units
// may report under one name: the DPT value map's lookups report as the converter front, for
// example). Used with TAV_LOG_AT / TAV_LOG_FROM from <platform/Logging.h>.

namespace Okaro
{
namespace LogFile
{
inline constexpr char AppHostConfig[] = "AppHostConfig.cpp";
inline constexpr char DscAsyncRequestMessenger[] = "DscAsyncRequestMessenger.cpp";
inline constexpr char GroupValueOkaValue[] = "GroupValueOkaValue.cpp";
inline constexpr char KnxConverter[] = "KnxConverter.cpp";
inline constexpr char KnxValueConverter[] = "KnxValueConverter.cpp";
inline constexpr char MeasureDuration[] = "MeasureDuration.cpp";
inline constexpr char RequestMessengerDeviceStack[] = "RequestMessengerDeviceStack.cpp";
} // namespace LogFile
} // namespace Okaro
