/* Loaded before the library, it tells another size of a record: as a library does whose headers are others. */
unsigned get_size_of_device_info(void);

unsigned get_size_of_device_info(void) { return 788; }
