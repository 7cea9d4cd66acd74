// What each platform implements once, in posix/ and win32/: the OS calls and
// nothing else. Only the portable seam layer (ZORSimUttOS.cpp) calls these,
// after its fault check; the contracts are those of ZORSimUttOS.h.
#pragma once

#include "ZORSimUttOS.h"

namespace ZORSimUttOS::Platform {

int CaptureStack(void** frames, int capacity, int skip);
bool InitializeSymbols();
SymbolInfo Symbolize(void* returnAddress);

bool ProcessArguments(std::vector<std::wstring>& args);

int OpenDir(const ZOROsString& directory, const ZOROsString& pattern, DirListing*& listing);
bool ReadDir(DirListing* listing, const char*& name, std::size_t& length, int& error);
void CloseDir(DirListing* listing);
int QueryAttributes(const ZOROsString& path, FileAttributes& attributes);

int OpenFile(const ZOROsString& path, FileOpenKind kind, FileHandle& handle);
int CloseFile(FileHandle handle);
int ReadFile(FileHandle handle, char* buffer, unsigned int size, unsigned int& moved);
int WriteFile(FileHandle handle, const char* buffer, unsigned int size, unsigned int& moved);
int SetFilePointer(FileHandle handle, unsigned long long position);
int SetEndOfFile(FileHandle handle);
int FlushFileBuffers(FileHandle handle);
int GetFileSize(FileHandle handle, unsigned long long& size);
int LockFile(FileHandle handle);
int UnlockFile(FileHandle handle);

// As ZORSimUttOS::QueryFileIdentity; `failed` names the call that failed.
int QueryFileIdentity(const ZOROsString& path, FileIdentity& identity, Service& failed);
int RenameFile(const ZOROsString& from, const ZOROsString& to);
int MakeHardLink(const ZOROsString& link, const ZOROsString& existing);
int RemoveFile(const ZOROsString& path);
int MakeDirectory(const ZOROsString& path);
int DeleteDirectory(const ZOROsString& path);
int FullPath(const ZOROsString& path, ZORString& full);

} // namespace ZORSimUttOS::Platform
