# one
# two