foo = 3 4
