// filled below
