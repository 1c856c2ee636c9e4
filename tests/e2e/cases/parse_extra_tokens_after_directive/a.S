	.word 1 2
