/* Stands for a library of the device while the plug-in is linked: nothing but its soname. */
typedef int import_is_empty;
