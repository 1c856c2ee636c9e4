# one
# two
# three
