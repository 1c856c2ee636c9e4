# With -g the label at the very end of a scheduled .text is followed by the generated end label,
# so no instruction follows it in its block. A branch to it must still be sized while the other
# instructions are: it once kept the label's address open, took a long backward form and
# stopped the assembler; with more instructions between, it took a needlessly long branch.
	.text
f:
	bu end
	add r0, r1, r2
end:
