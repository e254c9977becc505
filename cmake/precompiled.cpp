// Stands for the sources that share what CMakeLists.txt has compiled of the standard library.
