#pragma once

namespace Okaro
{
const char* GetLibraryVersion();
} // namespace Okaro
