// Owns the precompiled header of the tests, and does nothing.
int main() { return 0; }
