mkdir build
ln -s "$BUILD" build/release
ln -s "$SOURCE/examples" .
