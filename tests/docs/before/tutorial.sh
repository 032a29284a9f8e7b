mkdir build
ln -s "$BUILD" build/release
cp "$SOURCE"/examples/tutorial.c .
