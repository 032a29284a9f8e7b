cp "$SOURCE"/tests/data/golden/*.sas "$SOURCE"/tests/data/golden/*.cft .
