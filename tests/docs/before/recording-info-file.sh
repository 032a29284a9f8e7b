cp "$SOURCE"/tests/data/golden/*.inf .
