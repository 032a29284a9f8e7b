ln -s "$SOURCE/simulator" .
