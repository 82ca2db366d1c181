# Builds for 32-bit Linux with Debian's amd64 compiler (package g++-multilib). Libraries that Debian has no amd64 package
# of in this width are unpacked by tools/setup into runtime/i386-libs, with the links that a linker looks for.
set(CMAKE_CXX_FLAGS_INIT -m32)
set(CMAKE_LIBRARY_PATH ${CMAKE_CURRENT_LIST_DIR}/../runtime/i386-libs/usr/lib/i386-linux-gnu)
