



# last line