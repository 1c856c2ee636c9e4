x:
	.skip -1
