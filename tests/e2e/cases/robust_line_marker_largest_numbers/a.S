# 2147483647 "big.c"
	foo r0
	bar r1
# 4294967295 "wrap.c"
	baz
	qux
