# cmake --install: libraries, public headers, a CMake package and a pkg-config file.
