// The numbers that Windows gives its names: hosts on other systems see them too.
#include <gtest/gtest.h>

#ifdef _WIN32
#include <winsock2.h>
#include <windows.h>
#endif

#include "os/os.h"

namespace os {
namespace {

TEST(Constants, AreTheNumbersOfWindows) {
  EXPECT_EQ(2, addressFamilyInet);
  EXPECT_EQ(1, socketTypeStream);
  EXPECT_EQ(65535, socketLevel);
  EXPECT_EQ(128, optionLinger);
  EXPECT_EQ(131097u, keyRead);
  EXPECT_EQ(983103u, keyAllAccess);
  EXPECT_EQ(2u, keySetValue);
  EXPECT_EQ(1u, typeString);
  EXPECT_EQ(3u, typeBinary);
  EXPECT_EQ(4u, typeNumber);
  EXPECT_EQ(0, errorSuccess);
  EXPECT_EQ(2, errorFileNotFound);
  EXPECT_EQ(5, errorAccessDenied);
  EXPECT_EQ(6, errorInvalidHandle);
  EXPECT_EQ(8, errorNotEnoughMemory);
  EXPECT_EQ(29, errorWriteFault);
  EXPECT_EQ(87, errorInvalidParameter);
  EXPECT_EQ(234, errorMoreData);
  EXPECT_EQ(259, errorNoMoreItems);
  EXPECT_EQ(4294967295u, invalidFileAttributes);
  EXPECT_EQ(260u, longestPath);
}

#ifdef _WIN32
TEST(Constants, AreThoseOfTheSystemsHeaders) {
  EXPECT_EQ(INVALID_SOCKET, invalidSocket);
  EXPECT_EQ(AF_INET, addressFamilyInet);
  EXPECT_EQ(SOCK_STREAM, socketTypeStream);
  EXPECT_EQ(SOL_SOCKET, socketLevel);
  EXPECT_EQ(SO_LINGER, optionLinger);
  EXPECT_EQ(DWORD{KEY_READ}, keyRead);
  EXPECT_EQ(DWORD{KEY_ALL_ACCESS}, keyAllAccess);
  EXPECT_EQ(DWORD{KEY_SET_VALUE}, keySetValue);
  EXPECT_EQ(DWORD{REG_SZ}, typeString);
  EXPECT_EQ(DWORD{REG_BINARY}, typeBinary);
  EXPECT_EQ(DWORD{REG_DWORD}, typeNumber);
  EXPECT_EQ(ERROR_FILE_NOT_FOUND, errorFileNotFound);
  EXPECT_EQ(ERROR_ACCESS_DENIED, errorAccessDenied);
  EXPECT_EQ(ERROR_INVALID_HANDLE, errorInvalidHandle);
  EXPECT_EQ(ERROR_NOT_ENOUGH_MEMORY, errorNotEnoughMemory);
  EXPECT_EQ(ERROR_WRITE_FAULT, errorWriteFault);
  EXPECT_EQ(ERROR_INVALID_PARAMETER, errorInvalidParameter);
  EXPECT_EQ(ERROR_MORE_DATA, errorMoreData);
  EXPECT_EQ(ERROR_NO_MORE_ITEMS, errorNoMoreItems);
  EXPECT_EQ(INVALID_FILE_ATTRIBUTES, invalidFileAttributes);
  EXPECT_EQ(std::uint32_t{MAX_PATH}, longestPath);
}
#endif

}  // namespace
}  // namespace os
