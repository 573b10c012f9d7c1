// The socket calls of os.h whose results differ between Windows and POSIX. Descriptors are not inherited by programs
// that the process starts. Any thread may call them.
#pragma once

#include "os/os.h"

namespace os::posix {

Socket OpenSocket(int family, int type, int protocol);
int Connect(Socket socket, const SocketAddress* address, int length);
int Send(Socket socket, const void* bytes, int length, int flags);
int Receive(Socket socket, void* bytes, int capacity, int flags);
int SetOption(Socket socket, int level, int option, const void* value, int length);
const HostEntry* LookUp(const char* name);

}  // namespace os::posix
