	.syntax architectural
	.syntax weird
	.scheduling on
	.scheduling default
	.scheduling maybe
	.type f, @function
	.type f, @thing
	.file "a.c"
	.file "a.c"
	.file "b.c"
