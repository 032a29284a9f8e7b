// A library that does nothing, and is linked as the library is.
extern "C" [[gnu::visibility("default")]] int pvr_bench_minimal() noexcept;

int pvr_bench_minimal() noexcept { return 0; }
